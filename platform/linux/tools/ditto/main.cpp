// ditto -ck [--keepParent] SOURCE ARCHIVE
// ditto -xk ARCHIVE FOLDER
#include <sysexits.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "platform/linux/tools/archive/Interruption.h"
#include "platform/linux/tools/archive/OpenFileLimit.h"
#include "platform/linux/tools/archive/PrintableText.h"
#include "platform/linux/tools/archive/TreeArchiver.h"
#include "platform/linux/tools/archive/TreeExtractor.h"

namespace {

using platform::linux_host::KeepParent;

void tell(const std::string& line) {
    std::fprintf(stderr, "ditto: %s\n", platform::linux_host::printableText(line).c_str());
}

bool run(const std::vector<std::string>& arguments) {
    const std::string option = arguments.empty() ? std::string() : arguments[0];
    if (option == "-ck" && arguments.size() == 3) {
        platform::linux_host::archiveTree(arguments[1], arguments[2], KeepParent::no, tell);
    } else if (option == "-ck" && arguments.size() == 4 && arguments[1] == "--keepParent") {
        platform::linux_host::archiveTree(arguments[2], arguments[3], KeepParent::yes, tell);
    } else if (option == "-xk" && arguments.size() == 3) {
        platform::linux_host::extractArchive(arguments[1], arguments[2]);
    } else {
        return false;
    }
    return true;
}

}  // namespace

int main(int count, char** arguments) {
    platform::linux_host::noteInterruptions();
    platform::linux_host::allowManyOpenFiles();
    try {
        if (run({arguments + 1, arguments + count})) {
            return EX_OK;
        }
    } catch (const platform::linux_host::Interrupted&) {
        platform::linux_host::endByNotedSignal();
        return EXIT_FAILURE;
    } catch (const std::exception& failure) {
        tell(failure.what());
        return EXIT_FAILURE;
    }
    std::fprintf(stderr,
                 "usage: ditto -ck [--keepParent] SOURCE ARCHIVE\n"
                 "       ditto -xk ARCHIVE FOLDER\n");
    return EX_USAGE;
}
