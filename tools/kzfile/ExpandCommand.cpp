#include <array>

#include "lib/KZFileManager.h"
#include "lib/base/PathText.h"
#include "tools/commandline/Streams.h"
#include "tools/kzfile/Command.h"
#include "tools/kzfile/Paths.h"

namespace kzfile {

namespace {

constexpr std::array<Option, 1> options{{
    {'z', "zero", nullptr, "a NUL behind each name instead of a line break"},
}};

int run(const Arguments& arguments) {
    const char* const end = arguments.has("zero") ? "" : "\n";
    int code = done;
    for (const std::string& pattern : arguments.operands()) {
        const bool isAbsolute = pattern.starts_with('/');
        const std::string base = isAbsolute ? "/" : workingFolder();
        const std::string inBase = isAbsolute || base == "/" ? base : base + '/';
        const auto paths = KZFileManager::filesMatchingWildcardPath(pattern, base);
        for (const std::string& path : paths) {
            const std::string name = !isAbsolute && path.starts_with(inBase) ? path.substr(inBase.size()) : path;
            commandline::print((arguments.has("zero") ? name + '\0' : commandline::nameForOutput(name)) + end);
        }
        if (paths.empty()) {
            commandline::printError(pattern + ": nothing matches");
            code = failed;
        }
    }
    return code;
}

}  // namespace

const Command expandCommand{
    .name = "expand",
    .summary = "list what matches a pattern",
    .arguments = "PATTERN...",
    .help =
        "Lists the items that match, hidden ones included, in the order of the disk. In a part\n"
        "of the path with a \"*\" in it, \"*\" stands for any run of characters, \"?\" for one and \"\\\"\n"
        "takes the next one for itself; every other part is a name as it stands. Without any \"*\"\n"
        "the pattern is listed itself, whether or not it is there. Quote patterns, so that the\n"
        "shell leaves them alone.\n",
    .options = options,
    .fewest = 1,
    .most = Command::anyNumber,
    .run = run,
};

}  // namespace kzfile
