#include "tests/macos/gnustep/Probe.h"

#import <AppKit/AppKit.h>

#include <chrono>
#include <iostream>
#include <string>
#include <thread>

#import "platform/macos/appkit/EventLoop.h"
#import "platform/macos/appkit/InstallerViews.h"
#import "platform/macos/foundation/Guarded.h"
#import "platform/macos/foundation/Text.h"
#include "platform/ports/Host.h"
#include "tests/macos/gnustep/ProbeAlerts.h"
#include "tests/macos/gnustep/ProbeThrows.h"

using platform::macos::fromNS;
using platform::macos::guarded;
using platform::macos::toNS;

namespace {

platform::Outlets shown;

NSArray* visibleWindows() {
    NSMutableArray* const found = [NSMutableArray array];
    for (NSWindow* window in [NSApp windows]) {
        NSString* const kind = NSStringFromClass([window class]);
        if ([window isVisible] && [kind rangeOfString:@"Menu"].length == 0 && ![kind isEqualToString:@"NSIconWindow"]) {
            [found addObject:window];
        }
    }
    return found;
}

void collect(NSView* view, Class kind, NSMutableArray* found) {
    if ([view isHidden]) {
        return;
    }
    if ([view isKindOfClass:kind]) {
        [found addObject:view];
    }
    for (NSView* part in [view subviews]) {
        collect(part, kind, found);
    }
}

NSArray* partsOf(NSWindow* window, Class kind) {
    NSMutableArray* const found = [NSMutableArray array];
    collect([window contentView], kind, found);
    return found;
}

NSWindow* mainWindow() {
    for (NSWindow* window in [NSApp windows]) {
        if ([[window contentView] isKindOfClass:[WickfieldInstallerView class]]) {
            return window;
        }
    }
    return nil;
}

NSString* orEmpty(NSString* text) { return text != nil ? text : @""; }

id number(bool value) { return [NSNumber numberWithBool:value ? YES : NO]; }

NSDictionary* placeOf(NSView* view) {
    const NSRect frame = [view convertRect:[view bounds] toView:nil];
    return [NSDictionary
        dictionaryWithObjectsAndKeys:[NSNumber numberWithInt:static_cast<int>(frame.origin.x)], @"x",
                                     [NSNumber numberWithInt:static_cast<int>(frame.origin.y)], @"y",
                                     [NSNumber numberWithInt:static_cast<int>(frame.size.width)], @"width",
                                     [NSNumber numberWithInt:static_cast<int>(frame.size.height)], @"height", nil];
}

NSDictionary* describe(NSWindow* window) {
    NSMutableArray* const texts = [NSMutableArray array];
    for (NSTextField* field in partsOf(window, [NSTextField class])) {
        if ([[field stringValue] length] > 0) {
            [texts addObject:[field stringValue]];
        }
    }
    NSMutableArray* const buttons = [NSMutableArray array];
    NSMutableDictionary* const keys = [NSMutableDictionary dictionary];
    NSMutableArray* const checked = [NSMutableArray array];
    for (NSButton* button in partsOf(window, [NSButton class])) {
        if ([[button title] length] == 0) {
            continue;
        }
        [buttons addObject:[button title]];
        [keys setObject:orEmpty([button keyEquivalent]) forKey:[button title]];
        if ([button state] == NSOnState) {
            [checked addObject:[button title]];
        }
    }
    NSResponder* const focus = [window firstResponder];
    NSString* const focused = [focus isKindOfClass:[NSButton class]] ? [(NSButton*)focus title] : [focus className];
    return [NSDictionary dictionaryWithObjectsAndKeys:[window title], @"title", texts, @"texts", buttons, @"buttons",
                                                      keys, @"keys", checked, @"checked", number([window isKeyWindow]),
                                                      @"key", orEmpty(focused), @"focus", nil];
}

NSDictionary* describeInstaller() {
    NSWindow* const window = mainWindow();
    NSMutableDictionary* const all = [NSMutableDictionary dictionary];
    if (window == nil) {  // not on the screen so far
        [all setObject:number(false) forKey:@"visible"];
        return all;
    }
    WickfieldInstallerView* const view = [window contentView];
    [all setObject:[window title] forKey:@"title"];
    [all setObject:number([window isVisible]) forKey:@"visible"];
    [all setObject:[view->textPluginName stringValue] forKey:@"name"];
    [all setObject:[view->textPluginVersion stringValue] forKey:@"version"];
    [all setObject:[view->textPluginAuthor stringValue] forKey:@"author"];
    [all setObject:[view->tallowmereLinkText stringValue] forKey:@"branding"];
    [all setObject:number([view->tallowmereLinkText isHidden]) forKey:@"brandingHidden"];
    [all setObject:number([view->btnGantry isHidden]) forKey:@"gantryHidden"];
    [all setObject:number([view->btnInstall isEnabled]) forKey:@"installEnabled"];
    [all setObject:number([view->bgImageView image] != nil) forKey:@"background"];
    [all setObject:orEmpty([view->spinner accessibilityLabel]) forKey:@"spinnerLabel"];
    NSMutableDictionary* const places = [NSMutableDictionary dictionary];
    [places setObject:placeOf(view) forKey:@"view"];
    [places setObject:placeOf(view->textPluginName) forKey:@"name"];
    [places setObject:placeOf(view->textPluginVersion) forKey:@"version"];
    [places setObject:placeOf(view->textPluginAuthor) forKey:@"author"];
    [places setObject:placeOf(view->btnInstall) forKey:@"install"];
    [places setObject:placeOf(view->btnGantry) forKey:@"gantry"];
    [places setObject:placeOf(view->tallowmereLinkText) forKey:@"branding"];
    [places setObject:placeOf(view->bgImageView) forKey:@"background"];
    [all setObject:places forKey:@"places"];
    NSAttributedString* const branding = [view->tallowmereLinkText attributedStringValue];
    for (NSUInteger index = 0; index < [branding length]; ++index) {
        id const link = [branding attribute:NSLinkAttributeName atIndex:index effectiveRange:nullptr];
        if (link != nil) {
            [all setObject:[link description] forKey:@"link"];
        }
    }
    return all;
}

NSDictionary* describeSheet() {
    NSWindow* const sheet = [mainWindow() attachedSheet];
    NSMutableDictionary* const all = [NSMutableDictionary dictionary];
    if (sheet == nil) {
        return all;
    }
    [all setDictionary:describe(sheet)];
    [all setObject:number([sheet isVisible]) forKey:@"visible"];
    if ([[sheet contentView] isKindOfClass:[WickfieldAgreementView class]]) {
        WickfieldAgreementView* const view = [sheet contentView];
        [all setObject:[[view->eulaText textStorage] string] forKey:@"agreement"];
        [all setObject:number([view->eulaText isEditable]) forKey:@"editable"];
        [all setObject:orEmpty([view->eulaText accessibilityLabel]) forKey:@"label"];
        const bool standard = [[view->eulaText textColor] isEqual:[NSColor textColor]];
        [all setObject:number(standard) forKey:@"standardColour"];
    }
    return all;
}

NSDictionary* state() {
    NSMutableArray* const windows = [NSMutableArray array];
    for (NSWindow* window in visibleWindows()) {
        [windows addObject:describe(window)];
    }
    NSMutableArray* const answers = [NSMutableArray array];
    for (const auto& [kind, code] : probe::answers()) {
        [answers addObject:[NSArray arrayWithObjects:toNS(kind), [NSNumber numberWithLong:code], nil]];
    }
    return [NSDictionary dictionaryWithObjectsAndKeys:describeInstaller(), @"installer", describeSheet(), @"sheet",
                                                      windows, @"windows", answers, @"answers",
                                                      number([NSApp modalWindow] != nil), @"modal",
                                                      number([NSThread isMultiThreaded]), @"multithreaded", nil];
}

NSDictionary* outcome(bool done) { return [NSDictionary dictionaryWithObject:number(done) forKey:@"done"]; }

// Clicked from the event loop, so that the answer does not wait for what the click begins.
bool pressLater(NSString* title) {
    const bool blocked = [mainWindow() attachedSheet] != nil;
    for (NSWindow* window in visibleWindows()) {
        if (blocked && window == mainWindow()) {
            continue;
        }
        for (NSButton* button in partsOf(window, [NSButton class])) {
            if ([[button title] isEqualToString:title] && [button isEnabled]) {
                platform::host().mainThread->perform([button = [button retain]] {
                    guarded("a click", [button] { [button performClick:nil]; });
                    platform::macos::wakeEventLoop();  // as the events of a click by hand do
                    [button release];
                });
                return true;
            }
        }
    }
    return false;
}

bool toggle() {
    for (NSWindow* window in visibleWindows()) {
        for (NSButton* button in partsOf(window, [NSButton class])) {
            if ([[button title] hasPrefix:@"Do not show"]) {
                [button performClick:nil];
                return true;
            }
        }
    }
    return false;
}

bool openMenu() {
    NSMenu* const menu = [[[NSMenu alloc] initWithTitle:@"Probe"] autorelease];
    [menu addItemWithTitle:@"One" action:nullptr keyEquivalent:@""];
    [menu addItemWithTitle:@"Two" action:nullptr keyEquivalent:@""];
    NSView* const view = [mainWindow() contentView];
    NSEvent* const event = [NSEvent mouseEventWithType:NSLeftMouseDown
                                              location:NSMakePoint(40, 300)
                                         modifierFlags:0
                                             timestamp:0
                                          windowNumber:[mainWindow() windowNumber]
                                               context:nil
                                           eventNumber:0
                                            clickCount:1
                                              pressure:0];
    platform::host().mainThread->perform([menu = [menu retain], event = [event retain], view] {
        probe::remember("menu opened", 0);
        [NSMenu popUpContextMenu:menu withEvent:event forView:view];
        probe::remember("menu closed", 0);
        [menu release];
        [event release];
    });
    return true;
}

// GNUstep keeps the items of the application's menu in the main menu itself.
NSMenuItem* itemWithTitle(NSMenu* menu, NSString* begin) {
    for (NSMenuItem* item in [menu itemArray]) {
        NSMenuItem* const found = [item hasSubmenu] ? itemWithTitle([item submenu], begin) : nil;
        if (found != nil || [[item title] hasPrefix:begin]) {
            return found != nil ? found : item;
        }
    }
    return nil;
}

bool quit() {
    NSMenuItem* const item = itemWithTitle([NSApp mainMenu], @"Quit");
    platform::host().mainThread->perform(
        [item] { guarded("quitting", [item] { [NSApp sendAction:[item action] to:[item target] from:item]; }); });
    return item != nil;
}

// All three are waiting before the first begins, as this is on the main thread.
bool handOverBatch() {
    auto& mainThread = *platform::host().mainThread;
    mainThread.perform([] {
        platform::host().application->runAlertPanel("Panel", "A loop of its own, 100%@.");
        probe::remember("first", 0);
    });
    mainThread.perform([] { probe::remember("second", 0); });
    mainThread.perform([] { probe::remember("third", 0); });
    return true;
}

template <typename Work>
NSNumber* milliseconds(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    const auto taken = std::chrono::steady_clock::now() - start;
    return [NSNumber numberWithLong:std::chrono::duration_cast<std::chrono::milliseconds>(taken).count()];
}

NSDictionary* slices() {
    using namespace std::chrono_literals;
    auto& mainThread = *platform::host().mainThread;
    NSMutableDictionary* const seen = [NSMutableDictionary dictionary];
    mainThread.runNextEvent(0ms);  // what a display sends at any time is not to end a slice below
    [seen setObject:milliseconds([&] { mainThread.runNextEvent(200ms); }) forKey:@"idle"];
    [seen setObject:milliseconds([&] {
              for (int look = 0; look < 100; ++look) {
                  mainThread.runNextEvent(0ms);
              }
          })
             forKey:@"looks"];
    std::string order;
    std::thread other([&] {
        std::this_thread::sleep_for(20ms);
        mainThread.perform([&order] { order += "1"; });
        mainThread.perform([&order] { order += "2"; });
        mainThread.performAndWait([&order] { order += "3"; });
    });
    [seen setObject:milliseconds([&] {
              while (order.size() < 3) {
                  mainThread.runNextEvent(10s);
              }
          })
             forKey:@"woken"];
    other.join();
    [seen setObject:toNS(order) forKey:@"order"];
    return seen;
}

NSDictionary* serve(const std::string& line) {
    const auto space = line.find(' ');
    const std::string command = line.substr(0, space);
    const std::string rest = space == std::string::npos ? "" : line.substr(space + 1);
    if (command == "press") {
        return outcome(pressLater(toNS(rest)));
    }
    if (command == "toggle") {
        return outcome(toggle());
    }
    if (command == "worker" || command == "main" || command == "panel") {
        return outcome(probe::show(command, rest, *shown.window));
    }
    if (command == "menu") {
        return outcome(openMenu());
    }
    if (command == "quit") {
        return outcome(quit());
    }
    if (command == "throw") {
        return outcome(probe::throwThrough(rest, shown));
    }
    if (command == "batch") {
        return outcome(handOverBatch());
    }
    if (command == "slices") {
        return slices();
    }
    if (command == "leak") {
        return outcome([[NSMutableArray alloc] initWithCapacity:100] != nil);
    }
    return state();
}

std::string answerTo(const std::string& line) {
    std::string text;
    platform::host().mainThread->performAndWait([&] {
        guarded("the probe", [&] {
            NSData* const json = [NSJSONSerialization dataWithJSONObject:serve(line) options:0 error:nullptr];
            text.assign(static_cast<const char*>([json bytes]), [json length]);
        });
    });
    return text;
}

}  // namespace

namespace probe {

void start(const platform::Outlets& outlets) {
    shown = outlets;
    // Not before the event loop runs: two threads that are each the first to use some class can wait for each other in
    // GNUstep's runtime for ever.
    platform::host().mainThread->perform([] {
        std::thread([] {
            for (std::string line; std::getline(std::cin, line);) {
                std::cout << answerTo(line) << std::endl;
            }
        }).detach();
    });
}

}  // namespace probe
