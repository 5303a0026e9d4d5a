#include "tools/commandline/Interruption.h"
#include "tools/commandline/Streams.h"
#include "tools/kzfile/Command.h"
#include "tools/kzfile/Trashing.h"

namespace kzfile {

namespace {

int run(const Arguments& arguments) {
    const commandline::TidyWork tidy;
    int code = done;
    for (const std::string& name : arguments.operands()) {
        if (commandline::isInterrupted()) {
            return commandline::interruptionCode();
        }
        if (const std::string words = trashItem(name); !words.empty()) {
            commandline::printError(words);
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
