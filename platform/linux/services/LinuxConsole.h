// The system console: standard error and the system log.
#pragma once

#include "platform/ports/Console.h"

namespace platform::linux_host {

class LinuxConsole : public Console {
public:
    // One line, whatever the text holds: control characters, new lines and bytes that are not UTF-8 are shown as
    // backslash escapes, so that no text can pass itself off as another line or command a terminal.
    void log(const std::string& line) override;
};

}  // namespace platform::linux_host
