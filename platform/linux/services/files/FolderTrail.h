// The folders from the start of a walk down to where it stands.
//
// A walk through a tree holds a bounded number of descriptors however deep the tree is: folders far above are closed
// and found again through ".." on the way back. One thread at a time.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

#include "platform/posix/Descriptor.h"

namespace platform::linux_host {

class FolderTrail {
public:
    explicit FolderTrail(posix::Descriptor start);

    int current() const { return m_levels.back().folder.get(); }
    std::size_t depth() const { return m_levels.size(); }

    // Into a folder of the current one; a link is not followed. 0 or an errno, which leaves the walk where it was.
    int enter(const std::string& name);

    // Back to the folder above; not at the start. 0 or an errno; ESTALE when the folder above is another one by now,
    // because somebody moved the tree.
    int leave();

private:
    struct Level {
        posix::Descriptor folder;
        dev_t device = 0;  // both known only while the folder is closed
        ino_t inode = 0;
    };
    int closeFarFolder();

    std::vector<Level> m_levels;
};

}  // namespace platform::linux_host
