#include "platform/ports/ApplicationMain.h"

#import <AppKit/AppKit.h>

#include <cstdio>
#include <cstdlib>

#import "platform/macos/appkit/AppKitAlerts.h"
#import "platform/macos/appkit/AppKitApplication.h"
#import "platform/macos/appkit/AppKitMainThread.h"
#include "platform/macos/appkit/Callout.h"
#import "platform/macos/appkit/MainMenu.h"
#import "platform/macos/appkit/MainWindow.h"
#include "platform/macos/appkit/SignalWatch.h"
#import "platform/macos/foundation/Guarded.h"
#include "platform/macos/services/MacHost.h"
#include "platform/posix/ProcessStart.h"

// What AppKit tells of the application's life, passed on.
@interface WickfieldApplicationController : NSObject <NSApplicationDelegate> {
@public
    platform::macos::AppKitApplication* application;
    platform::macos::MainWindow* window;
    platform::ApplicationDelegate* delegate;
}
@end

@implementation WickfieldApplicationController

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
    static_cast<void>(notification);
    auto* const told = delegate;
    auto* const shown = window;
    [NSApp activateIgnoringOtherApps:YES];
    platform::macos::callOut([told, shown] {
        // Not before: an alert panel of an application that is not active yet gets no keys.
        told->awakeFromNib();
        shown->present();
        told->applicationDidFinishLaunching();
        // The buttons act from here on: nothing can be pressed before the agreement is up.
        shown->connectActions(*told);
    });
}

- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication*)sender {
    static_cast<void>(sender);
    bool ends = true;
    auto* const asked = delegate;
    platform::macos::callOut([asked, &ends] { ends = asked->applicationShouldTerminateAfterLastWindowClosed(); });
    return ends ? YES : NO;
}

- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)sender {
    static_cast<void>(sender);
    return YES;
}

- (void)applicationWillTerminate:(NSNotification*)notification {
    static_cast<void>(notification);
    auto* const ending = application;
    platform::macos::callOut([ending] { ending->finish(); });
}

@end

namespace platform {

namespace {

// Ends the process with its other threads still at work: nothing that they use is destroyed under them. A file that
// one of them is reading from would be waited for by a flush of all.
void endProcess() {
    std::fflush(stdout);
    std::_Exit(EXIT_SUCCESS);
}

Host makeHost(macos::AppKitApplication* application) {
    Host services = macos::services();
    services.mainThread = new macos::AppKitMainThread;
    services.application = application;
    services.alerts = new macos::AppKitAlerts;
    return services;
}

// What is made here is never destroyed: threads of the installation may use it to the process's very end.
void setUp(const MakeDelegate& makeDelegate) {
    [NSApplication sharedApplication];
    if (![NSThread isMultiThreaded]) {
        // Cocoa has no locks before its own first thread, and those of C++ are none of its own.
        [NSThread detachNewThreadSelector:@selector(class) toTarget:[NSObject class] withObject:nil];
    }
    auto* const application = new macos::AppKitApplication;
    setHost(makeHost(application));
    // The first that exit() runs, as it is the last to be registered.
    application->onWillTerminate([] { std::atexit(endProcess); });
    macos::watchSignals([] { host().mainThread->perform([] { host().application->terminate(); }); });

    static auto* const controller = [[WickfieldApplicationController alloc] init];  // AppKit does not keep it
    auto* const window = new macos::MainWindow;
    controller->application = application;
    controller->window = window;
    controller->delegate = makeDelegate(window->outlets()).release();
    [NSApp setDelegate:controller];
    NSString* const name = [[NSBundle mainBundle] objectForInfoDictionaryKey:@"CFBundleName"];
    macos::installMainMenu(name != nil ? name : [[NSProcessInfo processInfo] processName]);
}

}  // namespace

int applicationMain(int argc, char** argv, MakeDelegate makeDelegate) {
    posix::prepareProcess();
    if (!macos::guarded("starting", [&makeDelegate] { setUp(makeDelegate); })) {
        return EXIT_FAILURE;
    }
    return NSApplicationMain(argc, const_cast<const char**>(argv));
}

}  // namespace platform
