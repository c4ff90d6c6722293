#pragma once

#include <set>
#include <string>

#include "base/address_text.h"

/// Which boxes have stopped to answer. One thread.
class BoxPresence {
 public:
    /// One question to a box and whether it answered. The line that tells a change, empty when
    /// there is none: a box is silent after three questions in a row without an answer.
    std::string note(const AddressText& box, bool answered);

 private:
    AddressText asked_;  ///< last
    int missed_ = 0;     ///< in a row, by that box
    std::set<std::string> silent_;
};
