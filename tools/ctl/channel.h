#pragma once

#include <netinet/in.h>

#include <optional>
#include <string>

#include "base/descriptor.h"

namespace ctl {

/// A socket of one's own towards the command port of a console, or of all of them. One thread.
class Channel {
 public:
    Channel();

    /// Sends one command. Empty when it left, otherwise why it did not.
    std::string send(const std::string& address, const std::string& text) const;

    /// Asks the console at `address` for its device status and waits for the answer, as long as
    /// `timeoutMs`. A console works its commands off in their order: what was sent before is done
    /// when it answers. Nothing when it does not.
    std::optional<std::string> status(const std::string& address, int timeoutMs) const;

 private:
    Descriptor descriptor_;
};

}  // namespace ctl
