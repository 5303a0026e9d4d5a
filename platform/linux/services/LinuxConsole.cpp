#include "platform/linux/services/LinuxConsole.h"

#include <syslog.h>
#include <unistd.h>

#include <string_view>

#include "platform/linux/services/ConsoleText.h"
#include "platform/posix/WriteAll.h"

namespace platform::linux_host {

void LinuxConsole::log(const std::string& line) {
    const std::string shown = consoleLine(line) + '\n';
    // In one call where the stream takes it, so that lines of several threads and processes stay whole. A console that
    // is gone is nobody's failure.
    std::string_view left = shown;
    (void)posix::writeAll(STDERR_FILENO, left);
    ::syslog(LOG_USER | LOG_NOTICE, "%.*s", static_cast<int>(shown.size() - 1), shown.c_str());
}

}  // namespace platform::linux_host
