#pragma once

#import <AppKit/AppKit.h>

namespace platform::macos {

// The menu bar: the application's own menu, Edit and Window, with the keys that every Mac user knows.
void installMainMenu(NSString* applicationName);

}  // namespace platform::macos
