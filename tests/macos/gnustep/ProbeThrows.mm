#include "tests/macos/gnustep/ProbeThrows.h"

#import <AppKit/AppKit.h>

#include <chrono>
#include <functional>
#include <map>
#include <stdexcept>

#include "lib/KZLog.h"
#import "platform/macos/appkit/Callback.h"
#include "platform/ports/Host.h"
#include "tests/macos/gnustep/ProbeAlerts.h"

// Raises for each event that is sent to it.
@interface RaisingWindow : NSWindow
@end

@implementation RaisingWindow

- (void)sendEvent:(NSEvent*)event {
    static_cast<void>(event);
    [NSException raise:NSInvalidArgumentException format:@"on purpose"];
}

@end

@interface ProbeRaiser : NSObject
+ (void)raise;
@end

@implementation ProbeRaiser

+ (void)raise {
    @autoreleasepool {
        [NSException raise:NSInvalidArgumentException format:@"on purpose"];
    }
}

@end

namespace probe {

namespace {

using Way = std::function<void(const platform::Outlets& outlets)>;

[[noreturn]] void throwHere() { throw std::runtime_error("on purpose"); }

// By AppKit, as from a click.
void act(std::function<void(long)> work) {
    WickfieldCallback* const target = [WickfieldCallback callbackWithWork:std::move(work)];
    [NSApp sendAction:NSSelectorFromString(@"perform:") to:target from:nil];
}

void endSheet(const platform::Outlets& outlets) {
    platform::Application& application = *platform::host().application;
    application.beginSheet(*outlets.windowEULA, *outlets.window, throwHere);
    application.endSheet(*outlets.windowEULA);
}

void waitThroughEvent() {
    NSWindow* const window = [[RaisingWindow alloc] initWithContentRect:NSMakeRect(0, 0, 10, 10)
                                                              styleMask:NSBorderlessWindowMask
                                                                backing:NSBackingStoreBuffered
                                                                  defer:NO];
    [window setReleasedWhenClosed:NO];
    [window orderFront:nil];
    [NSApp postEvent:[NSEvent otherEventWithType:NSEventTypeApplicationDefined
                                        location:NSZeroPoint
                                   modifierFlags:0
                                       timestamp:0
                                    windowNumber:[window windowNumber]
                                         context:nil
                                         subtype:0
                                           data1:0
                                           data2:0]
             atStart:YES];
    platform::host().mainThread->runNextEvent(std::chrono::seconds(5));
    [window orderOut:nil];
    [window release];
    remember("went on", 0);
}

const std::map<std::string, Way>& ways() {
    static const std::map<std::string, Way> all{
        {"work", [](const platform::Outlets&) { throwHere(); }},
        {"action", [](const platform::Outlets&) { act([](long) { throwHere(); }); }},
        {"end", endSheet},
        {"observer",
         [](const platform::Outlets&) {
             platform::host().application->onWillTerminate(throwHere);
             platform::host().application->terminate();
         }},
        {"raise",
         [](const platform::Outlets&) {
             act([](long) { [NSException raise:NSInvalidArgumentException format:@"on purpose"]; });
         }},
        {"thread",
         [](const platform::Outlets&) {
             [NSThread detachNewThreadSelector:@selector(raise) toTarget:[ProbeRaiser class] withObject:nil];
         }},
        {"event", [](const platform::Outlets&) { waitThroughEvent(); }}};
    return all;
}

}  // namespace

bool throwThrough(const std::string& way, const platform::Outlets& outlets) {
    const auto found = ways().find(way);
    if (found == ways().end()) {
        return false;
    }
    KZLog::sharedController();  // from here on the log is told of such ends
    platform::host().mainThread->perform([work = found->second, outlets] { work(outlets); });
    return true;
}

}  // namespace probe
