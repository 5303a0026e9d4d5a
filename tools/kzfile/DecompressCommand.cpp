#include <array>

#include "lib/KZFileManager.h"
#include "tools/kzfile/Archiver.h"
#include "tools/kzfile/Command.h"

namespace kzfile {

namespace {

constexpr std::array<Option, 1> options{{replaceOption}};

int run(const Arguments& arguments) { return makeArchiveOrFolder(arguments, KZFileManager::decompressFile); }

}  // namespace

const Command decompressCommand{
    .name = "decompress",
    .summary = "unpack a zip archive into a new folder",
    .arguments = "ARCHIVE FOLDER",
    .help =
        "Unpacks all of the archive or nothing: a damaged or hostile archive leaves no folder\n"
        "behind, and nothing is ever written outside of it.\n",
    .options = options,
    .fewest = 2,
    .most = 2,
    .run = run,
};

}  // namespace kzfile
