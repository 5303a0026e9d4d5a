// What ends a tool's work.
#pragma once

#include <stdexcept>

namespace platform::linux_host {

// The text is for people: what could not be done with what, and why.
class ToolFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace platform::linux_host
