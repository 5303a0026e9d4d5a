// The folders between the top of a walk and the folder where it stands, so that a walk that follows links ends.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "platform/ports/Host.h"

namespace KZFileManager {

class FolderTrail {
public:
    // Held while the walk is inside the folder; one at a time per level, ended in reverse order.
    class Step {
    public:
        Step(FolderTrail& trail, const std::string& folder) : m_trail(trail) {
            const auto identity = platform::host().files->identity(folder);
            m_isLoop = identity && std::ranges::find(trail.m_folders, *identity) != trail.m_folders.end();
            m_trail.m_folders.push_back(identity.value_or(platform::FileIdentity{}));
        }
        ~Step() { m_trail.m_folders.pop_back(); }
        Step(const Step&) = delete;
        Step& operator=(const Step&) = delete;

        // The folder is one of its own ancestors: to go on would never end.
        bool isLoop() const noexcept { return m_isLoop; }

    private:
        FolderTrail& m_trail;
        bool m_isLoop = false;
    };

private:
    std::vector<platform::FileIdentity> m_folders;
};

// Whether the entry at the path is a folder, a link to one included; asks the disk only where the listing left it open.
inline bool isFolderEntry(const platform::DirectoryEntry& entry, const std::string& path) {
    switch (entry.type) {
        case platform::FileType::folder:
            return true;
        case platform::FileType::regular:
        case platform::FileType::other:
            return false;
        case platform::FileType::symbolicLink:
        case platform::FileType::unknown:
            break;
    }
    return platform::host().files->isFolder(path);
}

}  // namespace KZFileManager
