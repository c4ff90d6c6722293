#pragma once

#include <memory>
#include <type_traits>
#include <utility>

/// A call to something that outlives it: an argument for the length of one call, without a copy and
/// without memory of its own. Any thread.
template <class Signature>
class FunctionRef;

template <class Result, class... Arguments>
class FunctionRef<Result(Arguments...)> {
 public:
    template <class Callable>
    requires(!std::is_same_v<Callable, FunctionRef>)
        FunctionRef(const Callable& callable)  // a lambda stands where this is asked for
        : object_(std::addressof(callable)),
          call_([](const void* object, Arguments... arguments) -> Result {
              return (*static_cast<const Callable*>(object))(std::forward<Arguments>(arguments)...);
          }) {}

    Result operator()(Arguments... arguments) const {
        return call_(object_, std::forward<Arguments>(arguments)...);
    }

 private:
    const void* object_;
    Result (*call_)(const void*, Arguments...);
};
