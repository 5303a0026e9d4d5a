// A view of the file systems that is read-only but for some folders.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/posix/Descriptor.h"

namespace platform::rights {

// Keeps a tool from changing modes, owners, times and attributes outside of its folders, which nothing else does.
// A folder that is shielded is a file system of its own to the tool: nothing is renamed out of it or into it.
class MountShield {
public:
    // The folders that stay as they are, by descriptors that outlive this object. None when one has no path any more.
    static std::optional<MountShield> around(const std::vector<int>& folders);

    // Gives the calling process that view, for good; for use between vfork and exec. 0 or an errno: EPERM where the
    // helper may not mount, as in some containers.
    int raise() const noexcept;

private:
    struct Folder {
        int descriptor;
        std::string path;
    };
    std::vector<Folder> m_folders;
};

}  // namespace platform::rights
