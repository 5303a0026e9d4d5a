#include <array>

#include "lib/KZFileManager.h"
#include "tools/kzfile/Archiver.h"
#include "tools/kzfile/Command.h"

namespace kzfile {

namespace {

constexpr std::array<Option, 2> options{{
    {'c', "contents", nullptr, "store what lies in the folder, not the folder itself"},
    replaceOption,
}};

int run(const Arguments& arguments) {
    const auto parent = arguments.has("contents") ? IncludeParent::no : IncludeParent::yes;
    return makeArchiveOrFolder(arguments, [parent](const std::string& source, const std::string& archive) {
        return KZFileManager::compressFile(source, archive, parent);
    });
}

}  // namespace

const Command compressCommand{
    .name = "compress",
    .summary = "make a zip archive of a file or folder",
    .arguments = "SOURCE ARCHIVE",
    .help =
        "Stores the file, or the folder with all that lies in it. The archive appears under its\n"
        "name once it is complete.\n",
    .options = options,
    .fewest = 2,
    .most = 2,
    .run = run,
};

}  // namespace kzfile
