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

    // Hides `foreign` but for the names that lead from there to the last of the folders: nobody else can then lead
    // that way, or any within that folder, elsewhere. Links in it are not followed. False for names that go back.
    bool isolateLast(posix::Descriptor foreign, const std::vector<std::string>& names);

    // Gives the calling process that view, for good; for use between vfork and exec. 0 or an errno: EPERM where the
    // helper may not mount, as in some containers.
    int raise() const noexcept;

private:
    struct Folder {
        int descriptor;
        std::string path;
    };
    static std::optional<Folder> folderOf(int descriptor);
    int mountIsolated(int kept) const noexcept;

    std::vector<Folder> m_folders;
    posix::Descriptor m_heldForeign;
    std::optional<Folder> m_foreign;  // hidden
    std::vector<std::string> m_way;   // what is made in its place, one within the other; the last is the last folder
};

}  // namespace platform::rights
