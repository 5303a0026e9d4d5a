// kzfile: file operations of the library for the command line.
#include <array>

#include "tools/commandline/Main.h"
#include "tools/kzfile/Command.h"
#include "tools/kzfile/ReportingHost.h"

namespace {

constexpr std::array commands{&kzfile::hashCommand,       &kzfile::copyCommand,     &kzfile::trashCommand,
                              &kzfile::expandCommand,     &kzfile::uniqueCommand,   &kzfile::compressCommand,
                              &kzfile::decompressCommand, &kzfile::metadataCommand, &kzfile::sizeCommand,
                              &kzfile::waitCommand};

constexpr commandline::Program program{
    .name = "kzfile",
    .version = KZFILE_VERSION,
    .commands = commands,
    .notes =
        "Options and names come in any order; after \"--\" everything is a name.\n"
        "The exit status is 0 when all was done, 1 when something failed, 2 for a command line\n"
        "that makes no sense and 130 after Ctrl-C.\n",
};

}  // namespace

int main(int count, char** words) {
    commandline::prepare(program);
    kzfile::setReportingHost();
    commandline::runAndExit(program, count, words);
}
