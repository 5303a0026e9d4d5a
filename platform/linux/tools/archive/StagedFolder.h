// A folder that is filled under a hidden name before its contents are seen where they belong.
#pragma once

#include <string>

#include "platform/posix/Descriptor.h"

namespace platform::linux_host {

class StagedFolder {
public:
    // Makes the hidden folder, for the owner alone: beside the destination, whose missing parents are made, or inside
    // of it when it is there. Throws ToolFailure.
    explicit StagedFolder(const std::string& destination);

    // Removes what has not taken its place.
    ~StagedFolder();
    StagedFolder(const StagedFolder&) = delete;
    StagedFolder& operator=(const StagedFolder&) = delete;

    int folder() const { return m_folder.get(); }

    bool isForNew() const { return m_isNew; }

    // Gives a new destination its name in one step. Into a destination that was there the items are moved one after
    // another: folders are merged, other items replace what has their name. What stands in the way there, such as a
    // folder where an item would go, is looked for before the first one is moved. Gives the destination. Throws
    // ToolFailure.
    posix::Descriptor takePlace();

private:
    std::string m_destination;
    bool m_isNew = false;
    std::string m_path;
    posix::Descriptor m_folder;
};

}  // namespace platform::linux_host
