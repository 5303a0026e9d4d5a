#pragma once

#import <AppKit/AppKit.h>

// A text with a link in it. Tab reaches it, with a focus ring and without selecting its text; Space opens the link
// then, and Return stays the window's default button. The mouse selects text and opens the link as in any text field.
@interface WickfieldLinkField : NSTextField
@end
