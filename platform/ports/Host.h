// The services of the host that the program runs on.
#pragma once

#include "platform/ports/Alerts.h"
#include "platform/ports/Application.h"
#include "platform/ports/Authorization.h"
#include "platform/ports/BackgroundQueue.h"
#include "platform/ports/Console.h"
#include "platform/ports/Digests.h"
#include "platform/ports/FileManager.h"
#include "platform/ports/Identity.h"
#include "platform/ports/MainBundle.h"
#include "platform/ports/MainThread.h"
#include "platform/ports/OpenFiles.h"
#include "platform/ports/Processes.h"
#include "platform/ports/PropertyLists.h"
#include "platform/ports/StandardFolders.h"
#include "platform/ports/SystemInfo.h"
#include "platform/ports/UncaughtExceptions.h"
#include "platform/ports/UserDefaults.h"
#include "platform/ports/Workspace.h"

namespace platform {

// Non-owning; the services live until the process ends. The last four may be missing: nobody may hear of uncaught
// exceptions, a program without windows has no application and no alerts, a host without administrator rights no
// authorization.
struct Host {
    FileManager* files = nullptr;
    OpenFiles* openFiles = nullptr;
    Workspace* workspace = nullptr;
    StandardFolders* folders = nullptr;
    Identity* identity = nullptr;
    SystemInfo* system = nullptr;
    MainBundle* bundle = nullptr;
    PropertyLists* propertyLists = nullptr;
    Processes* processes = nullptr;
    MainThread* mainThread = nullptr;
    Console* console = nullptr;
    UserDefaults* defaults = nullptr;
    Digests* digests = nullptr;
    BackgroundQueue* background = nullptr;
    UncaughtExceptions* exceptions = nullptr;
    Application* application = nullptr;
    Alerts* alerts = nullptr;
    Authorization* authorization = nullptr;
};

// Handed over once, before any other thread is started.
void setHost(const Host& host);
const Host& host();

// For a scope, another host stands in for the present one; not while other threads use it.
class ScopedHost {
public:
    explicit ScopedHost(const Host& replacement);
    ~ScopedHost();
    ScopedHost(const ScopedHost&) = delete;
    ScopedHost& operator=(const ScopedHost&) = delete;

private:
    Host m_previous;
};

}  // namespace platform
