#include "platform/linux/services/LinuxHost.h"

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
#include "platform/posix/MainQueue.h"
#include "platform/posix/PosixOpenFiles.h"
#include "platform/posix/ProcessLauncher.h"

namespace platform::linux_host {

namespace {

// Linux has no ditto and no diskutil, and its xattr and lsof take other arguments.
posix::ShippedTools toolsBeside(const std::string& executable) {
    return {.folder = executable.substr(0, executable.rfind('/') + 1) + "tools",
            .paths = {"/usr/bin/ditto", "/usr/bin/xattr", "/usr/sbin/diskutil", "/usr/sbin/lsof"}};
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
    posix::ProcessLauncher processes{toolsBeside(bundle.executablePath())};
    posix::MainQueue mainThread;
    LinuxConsole console;
    LinuxUserDefaults defaults{LinuxUserDefaults::Services{files, propertyLists, bundle, identity}};
    OpenSSLDigests digests;
    posix::BackgroundWorkers background;
    Host host;

    Services() {
        host.files = &files;
        host.openFiles = &openFiles;
        host.workspace = &workspace;
        host.folders = &folders;
        host.identity = &identity;
        host.system = &system;
        host.bundle = &bundle;
        host.propertyLists = &propertyLists;
        host.processes = &processes;
        host.mainThread = &mainThread;
        host.console = &console;
        host.defaults = &defaults;
        host.digests = &digests;
        host.background = &background;
    }
};

}  // namespace

const Host& services() {
    // Not destroyed: other threads may still use the services while the process ends.
    static const Services& all = *new Services;
    return all.host;
}

}  // namespace platform::linux_host
