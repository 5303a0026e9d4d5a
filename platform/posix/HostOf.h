#pragma once

#include "platform/ports/Host.h"

namespace platform::posix {

// Those services of a host that need neither a window nor administrator rights, by the names that Host has for them.
template <typename Services>
Host hostOf(Services& services) {
    Host host;
    host.files = &services.files;
    host.openFiles = &services.openFiles;
    host.workspace = &services.workspace;
    host.folders = &services.folders;
    host.identity = &services.identity;
    host.system = &services.system;
    host.bundle = &services.bundle;
    host.propertyLists = &services.propertyLists;
    host.processes = &services.processes;
    host.mainThread = &services.mainThread;
    host.console = &services.console;
    host.defaults = &services.defaults;
    host.digests = &services.digests;
    host.background = &services.background;
    host.exceptions = &services.exceptions;
    return host;
}

}  // namespace platform::posix
