#include "platform/linux/services/LinuxConsole.h"

#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "platform/linux/services/ConsoleText.h"

namespace platform::linux_host {

namespace {

// In one call where the stream takes it, so that lines of several threads and processes stay whole.
void writeAll(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
        if (written > 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (written == 0 || errno != EINTR) {
            return;  // a console that is gone is nobody's failure
        }
    }
}

}  // namespace

void LinuxConsole::log(const std::string& line) {
    const std::string shown = consoleLine(line);
    writeAll(shown + '\n');
    ::syslog(LOG_USER | LOG_NOTICE, "%s", shown.c_str());
}

}  // namespace platform::linux_host
