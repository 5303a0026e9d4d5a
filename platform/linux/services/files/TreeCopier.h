// The contents of one folder, brought into another that is still empty.
#pragma once

#include <sys/stat.h>

#include <string>
#include <vector>

#include "platform/linux/services/files/FolderTrail.h"
#include "platform/linux/services/files/ItemMetadata.h"
#include "platform/ports/FileManager.h"

namespace platform::linux_host {

// One file into a new file; `from` and `to` are open. 0 or an errno.
int copyOpenFile(int from, const struct stat& status, int to, Inheritance inheritance);

// The text of a link, whatever its length. 0 or an errno.
int readLink(int folder, const std::string& name, std::string& target);

class TreeCopier {
public:
    // Both folders are open; the paths serve for messages only. Access lists that `to` may have inherited are dropped.
    TreeCopier(posix::Descriptor from, std::string fromPath, posix::Descriptor to);

    // Once. Stops at the first item that cannot be copied; what was copied by then stays in `to`.
    Failure run();

private:
    struct Level {
        std::string name;
        struct stat status {};
        std::vector<std::string> folders;  // still to be copied
    };

    Failure copyEntries();
    Failure copyEntry(DirectoryEntry& entry);
    Failure copyFile(const std::string& name);
    Failure copyLink(const std::string& name);
    Failure startFolder();
    Failure finishFolder();
    Failure failure(std::string_view doing, const std::string& name, int code) const;

    std::string m_path;
    FolderTrail m_from;
    FolderTrail m_to;
    std::vector<Level> m_levels;
};

}  // namespace platform::linux_host
