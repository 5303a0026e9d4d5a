// What the host's desktop does for files and applications. Any thread; nothing throws.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/ports/Error.h"

namespace platform {

class Workspace {
public:
    virtual ~Workspace() = default;

    // A folder that people see and move as one item, such as an application or a plug-in bundle.
    virtual bool isFilePackage(const std::string& path) = 0;

    // Moves the item `name` of `folder` to the Trash. `trashFolder` is the user's Trash as the caller knows it; a host
    // with a Trash of its own for each file system may put the item there instead. Never replaces what lies in the
    // Trash.
    virtual Failure recycle(const std::string& folder, const std::string& name, const std::string& trashFolder) = 0;

    // Mount points of local volumes, "/" among them.
    virtual std::vector<std::string> mountedLocalVolumePaths() = 0;

    // Tells the desktop that the item or folder changed, so that open windows refresh; a hint without an answer.
    virtual void noteFileSystemChanged(const std::string& path) = 0;

    // Asks the file browser to refresh the item; none stands for everything. Returns the host's status, 0 when sent.
    virtual int sendFinderUpdate(const std::optional<std::string>& path) = 0;

    // Opens an address in the default browser; false when nothing could be started.
    virtual bool openURL(const std::string& url) = 0;

    // Where the application with that bundle identifier lies; none when it is not installed.
    virtual std::optional<std::string> applicationWithIdentifier(const std::string& identifier) = 0;

    // Opens the addresses with the application and returns without waiting for it; false when it could not be started.
    virtual bool openURLs(const std::vector<std::string>& urls, const std::string& identifier) = 0;

    // Makes the application bundle known, so that it is found by its identifier and offered to the user; again after
    // it has changed or moved. Fails for what is no application with an identifier.
    virtual Failure registerApplication(const std::string& bundlePath) = 0;
};

}  // namespace platform
