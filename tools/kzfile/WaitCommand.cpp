#include <array>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <thread>

#include "lib/KZFileManager.h"
#include "platform/ports/Host.h"
#include "tools/commandline/Streams.h"
#include "tools/kzfile/Command.h"
#include "tools/kzfile/Paths.h"

namespace kzfile {

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr std::array<Option, 2> options{{
    {'t', "timeout", "SECONDS", "how long at the most, also 0.5 or 0 for one look; without it for ever"},
    {'f', "free", nullptr, "also until no process has the file open for writing"},
}};

constexpr std::chrono::milliseconds pause{100};
constexpr std::chrono::milliseconds pauseWithTool{400};  // who has a file open takes the search of all processes

std::optional<Seconds> timeoutFrom(const Arguments& arguments) {
    const auto text = arguments.value("timeout");
    if (!text) {
        return std::nullopt;
    }
    char* end = nullptr;
    const double seconds = std::strtod(text->c_str(), &end);
    if (text->empty() || *end != '\0' || !std::isfinite(seconds) || seconds < 0) {
        throw UsageError("the time-out is no number of seconds: " + *text);
    }
    return Seconds(seconds);
}

int run(const Arguments& arguments) {
    const auto timeout = timeoutFrom(arguments);
    const bool untilFree = arguments.has("free");
    const std::string tool = platform::host().processes->locateTool("/usr/sbin/lsof");
    if (untilFree && !platform::host().files->isExecutable(tool)) {
        commandline::printError(tool + ": the tool that knows who has a file open is not there");
        return failed;
    }
    const auto start = Clock::now();
    for (const std::string& name : arguments.operands()) {
        const std::string path = absolutePath(name);
        for (;;) {
            const bool isThere = KZFileManager::fileExistsAtPath(path);
            if (isThere && !(untilFree && KZFileManager::fileIsOpenForWriting(path))) {
                break;
            }
            if (timeout && Clock::now() - start >= *timeout) {
                commandline::printError(name + (isThere ? ": is still being written to" : ": is still not there"));
                return failed;
            }
            std::this_thread::sleep_for(isThere ? pauseWithTool : pause);
        }
    }
    return done;
}

}  // namespace

const Command waitCommand{
    .name = "wait",
    .summary = "wait until files are there, and free",
    .arguments = "NAME...",
    .help =
        "Ends as soon as all of the items are there, with status 0, or when the time is up, with\n"
        "status 1. Who has a file open can be seen of your own processes only, except by the\n"
        "superuser.\n",
    .options = options,
    .fewest = 1,
    .most = Command::anyNumber,
    .run = run,
};

}  // namespace kzfile
