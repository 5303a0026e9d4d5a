#include "tools/commandline/Streams.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include "platform/linux/services/ConsoleText.h"

namespace commandline {

namespace {

const char* programName = "";
bool startedWithoutOutput = false;
bool printedAnything = false;
int writeError = 0;

bool isTerminal(int stream) {
    const char* const kind = std::getenv("TERM");
    return ::isatty(stream) == 1 && kind != nullptr && *kind != '\0' && std::string_view(kind) != "dumb";
}

bool mayColour(int stream) {
    const char* const without = std::getenv("NO_COLOR");
    return isTerminal(stream) && (without == nullptr || *without == '\0');
}

std::size_t widthOf(int stream) {
    winsize size{};
    return ::ioctl(stream, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

std::string inBold(std::string_view text) { return "\033[1m" + std::string(text) + "\033[0m"; }

std::string inRed(std::string_view text) { return "\033[31m" + std::string(text) + "\033[0m"; }

}  // namespace

void noteStreams(const char* program) {
    programName = program;
    startedWithoutOutput = ::fcntl(STDOUT_FILENO, F_GETFD) < 0;
}

bool isErrorTerminal() { return isTerminal(STDERR_FILENO); }

std::size_t errorTerminalWidth() { return widthOf(STDERR_FILENO); }

std::size_t outputTerminalWidth() { return ::isatty(STDOUT_FILENO) == 1 ? widthOf(STDOUT_FILENO) : 0; }

std::string boldForOutput(std::string_view text) { return mayColour(STDOUT_FILENO) ? inBold(text) : std::string(text); }

std::string tintedForOutput(std::string_view text, Tint tint) {
    return mayColour(STDOUT_FILENO) ? (tint == Tint::red ? "\033[1;31m" : "\033[1;33m") + std::string(text) + "\033[0m"
                                    : std::string(text);
}

std::string outputSwatch(int red, int green, int blue) {
    if (!mayColour(STDOUT_FILENO)) {
        return "";
    }
    return "\033[48;2;" + std::to_string(red) + ';' + std::to_string(green) + ';' + std::to_string(blue) +
           "m  \033[0m ";
}

void print(std::string_view text) {
    printedAnything = printedAnything || !text.empty();
    errno = 0;
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() && writeError == 0) {
        writeError = errno != 0 ? errno : EIO;
    }
}

std::string nameForOutput(const std::string& name) {
    return ::isatty(STDOUT_FILENO) == 1 ? platform::linux_host::consoleLine(name) : name;
}

void printError(const std::string& message) {
    const std::string name = std::string(programName) + ':';
    printErrorAsItIs((mayColour(STDERR_FILENO) ? inRed(name) : name) + ' ' +
                     platform::linux_host::consoleLine(message) + '\n');
}

void printErrorAsItIs(std::string_view text) { (void)std::fwrite(text.data(), 1, text.size(), stderr); }

bool finishOutput() {
    errno = 0;
    if (std::fflush(stdout) != 0 && writeError == 0) {
        writeError = errno != 0 ? errno : EIO;
    }
    if (writeError == 0 && startedWithoutOutput && printedAnything) {
        writeError = EBADF;
    }
    if (writeError != 0 && writeError != EPIPE) {
        printError("standard output: " + std::generic_category().message(writeError));
    }
    return writeError == 0;
}

}  // namespace commandline
