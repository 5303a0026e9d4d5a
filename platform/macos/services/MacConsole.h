#pragma once

#include "platform/ports/Console.h"

namespace platform::macos {

// The system log, and standard error where it leads somewhere.
class MacConsole : public Console {
public:
    void log(const std::string& line) override;
};

}  // namespace platform::macos
