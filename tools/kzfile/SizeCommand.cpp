#include <array>

#include "lib/KZFileManager.h"
#include "tools/commandline/Streams.h"
#include "tools/kzfile/Command.h"
#include "tools/kzfile/Paths.h"

namespace kzfile {

namespace {

constexpr std::array<Option, 1> options{{
    {'u', "units", nullptr, "in KB, MB and so on, in steps of 1024, instead of bytes"},
}};

int run(const Arguments& arguments) {
    int code = done;
    for (const std::string& name : arguments.operands()) {
        const std::string path = absolutePath(name);
        if (kindOf(path) == ItemKind::missing) {
            commandline::printError(missingText(name));
            code = failed;
            continue;
        }
        const std::uint64_t size = KZFileManager::fileSize(path);
        const std::string text =
            arguments.has("units") ? KZFileManager::formatFileSize(static_cast<double>(size)) : std::to_string(size);
        commandline::print(text + "  " + commandline::nameForOutput(name) + '\n');
    }
    return code;
}

}  // namespace

const Command sizeCommand{
    .name = "size",
    .summary = "print how many bytes files and folders hold",
    .arguments = "NAME...",
    .help =
        "Prints the bytes of a file, or of all that lies in a folder. Links to folders are\n"
        "followed, and what is reached twice counts twice; a link to a file counts its own few\n"
        "bytes, and what cannot be read nothing.\n",
    .options = options,
    .fewest = 1,
    .most = Command::anyNumber,
    .run = run,
};

}  // namespace kzfile
