#import "platform/macos/appkit/LinkField.h"

#import "platform/macos/appkit/AppKitText.h"

namespace {

bool isClick() { return [[NSApp currentEvent] type] == NSEventTypeLeftMouseDown; }

}  // namespace

@implementation WickfieldLinkField

// Nil without a link.
- (NSString*)address {
    NSAttributedString* const text = [self attributedStringValue];
    NSRange range = NSMakeRange(0, 0);
    for (NSUInteger index = 0; index < [text length]; index = NSMaxRange(range)) {
        id const link = [text attribute:NSLinkAttributeName atIndex:index effectiveRange:&range];
        if (link != nil) {
            return [link isKindOfClass:[NSURL class]] ? [link absoluteString] : [link description];
        }
    }
    return nil;
}

- (BOOL)acceptsFirstResponder {
    return [self address] != nil ? YES : NO;
}

- (BOOL)becomeFirstResponder {
    if (isClick()) {
        return [super becomeFirstResponder];
    }
    [self setNeedsDisplay:YES];
    return YES;
}

// Tab asks for this, too.
- (void)selectText:(id)sender {
    if (isClick()) {
        [super selectText:sender];
    }
}

- (BOOL)resignFirstResponder {
    [self setNeedsDisplay:YES];
    return [super resignFirstResponder];
}

- (void)keyDown:(NSEvent*)event {
    NSString* const address = [self address];
    if (address != nil && [[event charactersIgnoringModifiers] isEqualToString:@" "]) {
        platform::macos::openLink(address);
    } else {
        [super keyDown:event];
    }
}

- (BOOL)accessibilityPerformPress {
    NSString* const address = [self address];
    if (address != nil) {
        platform::macos::openLink(address);
    }
    return address != nil ? YES : NO;
}

- (NSRect)focusRingMaskBounds {
    return [self bounds];
}

- (void)drawFocusRingMask {
    NSRectFill([self bounds]);
}

@end
