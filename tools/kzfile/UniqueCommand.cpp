#include <array>

#include "lib/KZFileManager.h"
#include "lib/base/PathText.h"
#include "tools/commandline/Streams.h"
#include "tools/kzfile/Command.h"
#include "tools/kzfile/Paths.h"

namespace kzfile {

namespace {

constexpr std::array<Option, 1> options{{
    {'z', "zero", nullptr, "a NUL behind the name instead of a line break"},
}};

int run(const Arguments& arguments) {
    const std::string& name = arguments.operands().front();
    const std::string free = kz::lastPathComponent(KZFileManager::uniqueFilename(absolutePath(name)));
    const std::string shown = name.substr(0, name.find_last_not_of('/') + 1);
    const auto slash = shown.rfind('/');
    const std::string whole = (slash == std::string::npos ? "" : shown.substr(0, slash + 1)) + free;
    commandline::print(arguments.has("zero") ? whole + '\0' : commandline::nameForOutput(whole) + '\n');
    return done;
}

}  // namespace

const Command uniqueCommand{
    .name = "unique",
    .summary = "print a name that is not taken yet",
    .arguments = "NAME",
    .help =
        "Prints the name itself when nothing is there, else the first free one of \"NAME 2\",\n"
        "\"NAME 3\" and so on, with the extension kept at the end. Nothing is made: somebody else\n"
        "may take the name first.\n",
    .options = options,
    .fewest = 1,
    .most = 1,
    .run = run,
};

}  // namespace kzfile
