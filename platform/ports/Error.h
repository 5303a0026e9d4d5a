// What a host service reports when it could not do what it was asked.
#pragma once

#include <optional>
#include <string>

namespace platform {

struct Error {
    int code = 0;             // errno or the host's own status
    std::string description;  // for people and the log, naming the item concerned; no full stop at its end
};

// Empty when the call did what it was asked to do.
using Failure = std::optional<Error>;

}  // namespace platform
