#include "platform/macos/services/MacHost.h"

#include "platform/macos/services/GlobalQueue.h"
#include "platform/macos/services/MacConsole.h"
#include "platform/macos/services/MacIdentity.h"
#include "platform/macos/services/MacMainBundle.h"
#include "platform/macos/services/MacPropertyLists.h"
#include "platform/macos/services/MacStandardFolders.h"
#include "platform/macos/services/MacSystemInfo.h"
#include "platform/macos/services/MacUncaughtExceptions.h"
#include "platform/macos/services/MacUserDefaults.h"
#include "platform/macos/services/digests/CommonDigests.h"
#include "platform/macos/services/files/MacFileManager.h"
#include "platform/macos/services/files/OpenFileAttributes.h"
#include "platform/macos/services/rights/MacAuthorization.h"
#include "platform/macos/services/workspace/MacWorkspace.h"
#include "platform/posix/HostOf.h"
#include "platform/posix/MainQueue.h"
#include "platform/posix/PosixOpenFiles.h"
#include "platform/posix/ProcessLauncher.h"

namespace platform::macos {

namespace {

struct Services {
    MacFileManager files;
    posix::PosixOpenFiles openFiles{copyAttributes};
    MacWorkspace workspace;
    MacStandardFolders folders;
    MacIdentity identity;
    MacSystemInfo system;
    MacMainBundle bundle;
    MacPropertyLists propertyLists;
    posix::ProcessLauncher processes;  // the system has all the tools
    posix::MainQueue mainThread;
    MacConsole console;
    MacUserDefaults defaults;
    CommonDigests digests;
    GlobalQueue background;
    MacUncaughtExceptions exceptions;
    MacAuthorization authorization;
    Host host = posix::hostOf(*this);

    Services() { host.authorization = &authorization; }
};

}  // namespace

const Host& services() {
    // Not destroyed: other threads may still use the services while the process ends.
    static const Services& all = *new Services;
    return all.host;
}

}  // namespace platform::macos
