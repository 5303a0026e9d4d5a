// Controls as the installer uses them, each made and owned by the view that it is added to.
#pragma once

#import <AppKit/AppKit.h>

namespace platform::macos {

// Text that can be neither edited nor selected; one line, cut off at its end.
NSTextField* addLabel(NSView* view, NSString* text, NSFont* font);

// The same over as many lines as it needs, of NSTextField or a class below it.
NSTextField* addWrappingLabel(NSView* view, Class kind, NSString* text, NSFont* font);

// A push button without an action.
NSButton* addButton(NSView* view, NSString* title, NSString* keyEquivalent);

// What the control needs: on one line; as a button with its usual least width; in that width.
CGFloat widthOf(NSTextField* label);
CGFloat widthOf(NSButton* button);
CGFloat heightOf(NSControl* control);
CGFloat heightOf(NSTextField* label, CGFloat width);

}  // namespace platform::macos
