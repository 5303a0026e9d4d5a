// What a host service reports when it could not do what it was asked.
#pragma once

#include <optional>
#include <string>

namespace platform {

struct Error {
    int code = 0;             // errno or the host's own status
    std::string description;  // one sentence for people and the log, naming the item concerned
};

// Empty when the call did what it was asked to do.
using Failure = std::optional<Error>;

}  // namespace platform
