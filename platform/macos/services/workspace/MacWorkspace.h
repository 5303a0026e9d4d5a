// What the Finder and Launch Services do for files and applications.
#pragma once

#include "platform/ports/Workspace.h"

namespace platform::macos {

// Uses calls that the system has replaced by others but still has; each does its work before it returns, which those
// that replace them do not.
class MacWorkspace : public Workspace {
public:
    bool isFilePackage(const std::string& path) override;
    // Into the Trash of the item's own volume. The call keeps its reason for a failure to itself: the code is what can
    // be seen of the item, its folder and the Trash afterwards, EIO when that shows none.
    Failure recycle(const std::string& folder, const std::string& name, const std::string& trashFolder) override;
    std::vector<std::string> mountedLocalVolumePaths() override;
    void noteFileSystemChanged(const std::string& path) override;
    int sendFinderUpdate(const std::optional<std::string>& path) override;
    bool openURL(const std::string& url) override;
    std::optional<std::string> applicationWithIdentifier(const std::string& identifier) override;
    bool openURLs(const std::vector<std::string>& urls, const std::string& identifier) override;
    Failure registerApplication(const std::string& bundlePath) override;
};

}  // namespace platform::macos
