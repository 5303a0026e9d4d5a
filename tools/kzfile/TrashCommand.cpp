#include "lib/KZFileManager.h"
#include "lib/KZLocalPaths.h"
#include "lib/base/PathText.h"
#include "tools/kzfile/Command.h"
#include "tools/kzfile/Interruption.h"
#include "tools/kzfile/Paths.h"
#include "tools/kzfile/ReportingHost.h"
#include "tools/kzfile/Streams.h"

namespace kzfile {

namespace {

// What is wrong, in words; "" when the item lies in the Trash.
std::string trash(const std::string& name) {
    const std::string last = kz::lastPathComponent(name);
    if (last == "." || last == "..") {
        return name + ": a folder goes to the Trash by its name only";
    }
    const std::string path = resolvedPath(name);
    const ItemKind kind = kindOf(path);
    if (kind == ItemKind::missing) {
        return missingText(name);
    }
    if (kind == ItemKind::danglingLink) {
        return name + ": is a link that leads nowhere, and stays";
    }
    if (KZLocalPaths::isPathSystemDirectory(path)) {
        return name + ": is one of the system's folders, or lies in one, and stays";
    }
    if (!KZLocalPaths::trashDirectory()) {
        return name + ": there is no Trash, as nobody is logged in at this machine's console";
    }
    reports().clear();
    if (KZFileManager::trashFile(path, ShouldAuth::no)) {
        return "";
    }
    return reports().lastFailure().value_or(name + ": cannot be moved to the Trash");
}

int run(const Arguments& arguments) {
    const TidyWork tidy;
    int code = done;
    for (const std::string& name : arguments.operands()) {
        if (isInterrupted()) {
            return interruptionCode();
        }
        if (const std::string words = trash(name); !words.empty()) {
            printError(words);
            code = failed;
        }
    }
    return code;
}

}  // namespace

const Command trashCommand{
    .name = "trash",
    .summary = "move files and folders to the Trash",
    .arguments = "NAME...",
    .help =
        "Moves each item to your Trash, or to that of the disk that it is on, from where the\n"
        "file manager can put it back. What is locked is unlocked. The system's own folders and\n"
        "your home folder stay where they are. For the superuser it is the Trash of the person\n"
        "at the console.\n",
    .options = {},
    .fewest = 1,
    .most = Command::anyNumber,
    .run = run,
};

}  // namespace kzfile
