#import "platform/macos/appkit/MainMenu.h"

namespace platform::macos {

namespace {

NSMenu* addMenu(NSMenu* bar, NSString* title) {
    NSMenuItem* const item = [[[NSMenuItem alloc] initWithTitle:title action:nullptr keyEquivalent:@""] autorelease];
    NSMenu* const menu = [[[NSMenu alloc] initWithTitle:title] autorelease];
    [bar addItem:item];
    [bar setSubmenu:menu forItem:item];
    return menu;
}

// Without a target of its own an item acts on whatever is in front.
NSMenuItem* addItem(NSMenu* menu, NSString* title, SEL action, NSString* key) {
    NSMenuItem* const item = [[[NSMenuItem alloc] initWithTitle:title action:action keyEquivalent:key] autorelease];
    [menu addItem:item];
    return item;
}

void fillApplicationMenu(NSMenu* menu, NSString* name) {
    addItem(menu, [@"About " stringByAppendingString:name], @selector(orderFrontStandardAboutPanel:), @"");
    [menu addItem:[NSMenuItem separatorItem]];
    addItem(menu, [@"Hide " stringByAppendingString:name], @selector(hide:), @"h");
    NSMenuItem* const others = addItem(menu, @"Hide Others", @selector(hideOtherApplications:), @"h");
    [others setKeyEquivalentModifierMask:NSEventModifierFlagCommand | NSEventModifierFlagOption];
    addItem(menu, @"Show All", @selector(unhideAllApplications:), @"");
    [menu addItem:[NSMenuItem separatorItem]];
    addItem(menu, [@"Quit " stringByAppendingString:name], @selector(terminate:), @"q");
}

}  // namespace

void installMainMenu(NSString* applicationName) {
    NSMenu* const bar = [[[NSMenu alloc] initWithTitle:applicationName] autorelease];
    fillApplicationMenu(addMenu(bar, applicationName), applicationName);
    NSMenu* const edit = addMenu(bar, @"Edit");
    addItem(edit, @"Copy", @selector(copy:), @"c");
    addItem(edit, @"Select All", @selector(selectAll:), @"a");
    NSMenu* const window = addMenu(bar, @"Window");
    addItem(window, @"Minimise", @selector(performMiniaturize:), @"m");
    addItem(window, @"Close", @selector(performClose:), @"w");
    [NSApp setMainMenu:bar];
    [NSApp setWindowsMenu:window];
}

}  // namespace platform::macos
