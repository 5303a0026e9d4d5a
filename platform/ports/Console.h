// The system console: low-level messages that do not belong into the program's own log. Any thread; nothing throws.
#pragma once

#include <string>

namespace platform {

class Console {
public:
    virtual ~Console() = default;
    virtual void log(const std::string& line) = 0;
};

}  // namespace platform
