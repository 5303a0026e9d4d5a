// What a Linux desktop does for files and applications.
#pragma once

#include <atomic>

#include "platform/ports/Identity.h"
#include "platform/ports/Workspace.h"

namespace platform::linux_host {

// Works without a desktop too: the Trash is the freedesktop.org one, applications are desktop entries, addresses go to
// xdg-open. File managers watch folders by themselves, so that hints about changes are counted and dropped.
//
// XDG_DATA_HOME is respected for the home folder of whoever runs the process, not for somebody else's.
class LinuxWorkspace : public Workspace {
public:
    explicit LinuxWorkspace(Identity& identity);

    bool isFilePackage(const std::string& path) override;
    Failure recycle(const std::string& folder, const std::string& name, const std::string& trashFolder) override;
    std::vector<std::string> mountedLocalVolumePaths() override;
    void noteFileSystemChanged(const std::string& path) override;
    int sendFinderUpdate(const std::optional<std::string>& path) override;
    bool openURL(const std::string& url) override;
    std::optional<std::string> applicationWithIdentifier(const std::string& identifier) override;
    bool openURLs(const std::vector<std::string>& urls, const std::string& identifier) override;
    Failure registerApplication(const std::string& bundlePath) override;

    unsigned long droppedHints() const { return m_droppedHints; }

private:
    std::vector<std::string> dataFolders();

    Identity& m_identity;
    std::atomic<unsigned long> m_droppedHints{0};
};

}  // namespace platform::linux_host
