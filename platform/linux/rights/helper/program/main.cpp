// The administrator-rights helper. It is started as root by sudo, pkexec or the like, with one end of a socket pair as
// its standard input, and serves the process at the other end until that ends. With a command as its arguments it runs
// that instead, as whoever it is, and keeps the helper in reach of it.
#include <grp.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/linux/rights/helper/CleanProcess.h"
#include "platform/linux/rights/helper/HelperLoop.h"
#include "platform/linux/rights/helper/Keeper.h"

namespace {

// Whoever starts it may have root as the effective user only; tools are to see nobody else.
bool becomeRoot() {
    return ::geteuid() == 0 && ::setgroups(0, nullptr) == 0 && ::setresgid(0, 0, 0) == 0 && ::setresuid(0, 0, 0) == 0;
}

}  // namespace

int main(int count, char** arguments) {
    if (count > 1) {
        ::_exit(platform::rights::keepHelperFor({arguments + 1, arguments + count}));
    }
    if (!becomeRoot()) {
        return EXIT_FAILURE;
    }
    platform::rights::cleanProcess();
    return platform::rights::HelperLoop(STDIN_FILENO).run();
}
