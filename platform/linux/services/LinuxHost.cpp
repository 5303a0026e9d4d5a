#include "platform/linux/services/LinuxHost.h"

#include <filesystem>
#include <system_error>

#include "platform/linux/services/LinuxConsole.h"
#include "platform/linux/services/LinuxIdentity.h"
#include "platform/linux/services/LinuxMainBundle.h"
#include "platform/linux/services/LinuxStandardFolders.h"
#include "platform/linux/services/LinuxSystemInfo.h"
#include "platform/linux/services/LinuxUserDefaults.h"
#include "platform/linux/services/digests/OpenSSLDigests.h"
#include "platform/linux/services/files/LinuxFileManager.h"
#include "platform/linux/services/files/OpenFileAttributes.h"
#include "platform/linux/services/propertylists/LinuxPropertyLists.h"
#include "platform/linux/services/workspace/LinuxWorkspace.h"
#include "platform/posix/BackgroundWorkers.h"
#include "platform/posix/HostOf.h"
#include "platform/posix/MainQueue.h"
#include "platform/posix/PosixOpenFiles.h"
#include "platform/posix/ProcessLauncher.h"
#include "platform/posix/TerminateHandler.h"

namespace platform::linux_host {

namespace {

// In a bundle, else where they are installed with a program in the folder bin/.
std::string usualToolsFolder(const std::string& executable) {
    const std::string folder = executable.substr(0, executable.rfind('/') + 1);
    std::string inBundle = folder + "tools";
    std::error_code error;
    return std::filesystem::is_directory(inBundle, error) ? inBundle : folder + "../libexec/wickfield";
}

// Linux has no ditto and no diskutil, and its xattr and lsof take other arguments.
posix::ShippedTools toolsIn(const std::string& folder) {
    return {.folder = folder, .paths = {"/usr/bin/ditto", "/usr/bin/xattr", "/usr/sbin/diskutil", "/usr/sbin/lsof"}};
}

struct Services {
    LinuxFileManager files;
    posix::PosixOpenFiles openFiles{copyAttributes};
    LinuxIdentity identity;
    LinuxStandardFolders folders{identity};
    LinuxWorkspace workspace{identity};
    LinuxSystemInfo system;
    LinuxPropertyLists propertyLists;
    LinuxMainBundle bundle{propertyLists};
    posix::ProcessLauncher processes;
    posix::MainQueue mainThread;
    LinuxConsole console;
    LinuxUserDefaults defaults{LinuxUserDefaults::Services{files, propertyLists, bundle, identity}};
    OpenSSLDigests digests;
    posix::BackgroundWorkers background;
    posix::TerminateHandler exceptions;
    Host host = posix::hostOf(*this);

    explicit Services(const std::optional<std::string>& toolsFolder)
        : processes(toolsIn(toolsFolder.value_or(usualToolsFolder(bundle.executablePath())))) {}
};

}  // namespace

const Host& services(const std::optional<std::string>& toolsFolder) {
    // Not destroyed: other threads may still use the services while the process ends.
    static const Services& all = *new Services(toolsFolder);
    return all.host;
}

}  // namespace platform::linux_host
