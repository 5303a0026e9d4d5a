// The agreement that a user reads before installing.
#pragma once

#import <AppKit/AppKit.h>

namespace platform::macos {

// Reads a regular file or a folder by its kind: rich text (rtf), rich text with attachments (a folder), HTML (html,
// htm, xhtml), else plain text. Contents that open like rich text or HTML go before an extension that says neither;
// rich text that cannot be read as such is shown as it stands.
//
// Nothing is fetched from a network and nothing is run. The kind is never left to AppKit, which would hand other things
// to its reader of web pages; what that gets is safeHtml, with the pictures of the file's own folder.
//
// Main thread only; blocks while it reads. Autoreleased; nil when nothing can be read.
NSAttributedString* agreementText(NSString* path);

}  // namespace platform::macos
