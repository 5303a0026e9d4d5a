// Texts as AppKit shows them.
#pragma once

#import <AppKit/AppKit.h>

#include "platform/ports/AttributedString.h"

namespace platform::macos {

// At most so many characters, cut between two that the user sees as such.
NSString* shortened(NSString* text, NSUInteger longest);

// Autoreleased. Every run has the font; the standard colour and the blue keep readable in a dark window.
NSAttributedString* attributedText(const AttributedString& runs, NSFont* font);

// Opens an address of the web or of mail in its application; nothing else, so that a document cannot start programs.
void openLink(NSString* address);

}  // namespace platform::macos
