// One operation on files, for a run in which a call on the operating system fails or the process is killed.
#include <cstdio>
#include <string>
#include <vector>

#include "platform/linux/services/files/LinuxFileManager.h"
#include "platform/linux/services/workspace/LinuxWorkspace.h"
#include "tests/fakes/FakeIdentity.h"

namespace {

using platform::Failure;

// Exit codes: 0 done, 1 the operation reported a failure, 2 the driver was called wrongly.
int report(const Failure& failed) {
    if (failed) {
        std::fprintf(stderr, "%d %s\n", failed->code, failed->description.c_str());
    }
    return failed ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    platform::linux_host::LinuxFileManager files;
    if (words.size() == 3 && words[0] == "copy") {
        return report(files.copyItem(words[1], words[2]));
    }
    if (words.size() == 3 && words[0] == "move") {
        return report(files.moveItem(words[1], words[2]));
    }
    if (words.size() == 2 && words[0] == "remove") {
        return report(files.removeItem(words[1]));
    }
    if (words.size() == 3 && words[0] == "write") {
        return report(files.writeAtomically(words[1], words[2]));
    }
    if (words.size() == 4 && words[0] == "trash") {
        fakes::FakeIdentity identity;
        platform::linux_host::LinuxWorkspace workspace(identity);
        return report(workspace.recycle(words[1], words[2], words[3]));
    }
    std::fputs("usage: copy A B | move A B | remove A | write A TEXT | trash FOLDER NAME TRASH\n", stderr);
    return 2;
}
