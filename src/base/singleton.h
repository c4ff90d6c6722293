#pragma once

#include <pthread.h>

#include <memory>

/// One lazily created, shared T. Callers run `init` through the once-control and then copy the
/// holder; `instance` does both. Any thread; concurrent first use is safe.
template <class T>
class Singleton {
 public:
    static std::shared_ptr<T> instance() {
        pthread_once(&ponce_, &Singleton::init);
        return value_;
    }

    /// Creates the object and its control block as one allocation, releasing any previous holder.
    static void init() { value_ = std::make_shared<T>(); }

    /// Lets go of the object, which ends when nobody uses it any more.
    static void end() { value_.reset(); }

 private:
    static inline pthread_once_t ponce_ = PTHREAD_ONCE_INIT;
    static inline std::shared_ptr<T> value_;
};
