// wickfield-bundle: makes an installer's bundle, checks one, and shows what it would install.
#include <array>

#include "platform/linux/services/LinuxHost.h"
#include "tools/commandline/Main.h"
#include "tools/wickfield-bundle/Commands.h"

namespace {

constexpr std::array<const commandline::Command*, 3> commands{
    &wickfield_bundle::createCommand,
    &wickfield_bundle::checkCommand,
    &wickfield_bundle::showCommand,
};

constexpr commandline::Program program{
    .name = "wickfield-bundle",
    .version = WICKFIELD_BUNDLE_VERSION,
    .commands = commands,
    .notes =
        "Options and names come in any order; after \"--\" everything is a name.\n"
        "The exit status is 0 when all is well, 1 when something failed or a check found an\n"
        "error, 2 for a command line or a project that makes no sense and 130 after Ctrl-C.\n",
};

}  // namespace

int main(int count, char** words) {
    commandline::prepare(program);
    platform::setHost(platform::linux_host::services());
    commandline::runAndExit(program, count, words);
}
