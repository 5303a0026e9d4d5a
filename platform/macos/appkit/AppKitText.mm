#import "platform/macos/appkit/AppKitText.h"

#include "platform/macos/appkit/Callout.h"
#import "platform/macos/foundation/Text.h"
#include "platform/ports/Host.h"

namespace platform::macos {

namespace {

// Pure blue can hardly be read on a dark ground.
NSColor* readableBlue() {
    return [NSColor
          colorWithName:@"WickfieldLink"
        dynamicProvider:^NSColor*(NSAppearance* appearance) {
          NSString* const nearest =
              [appearance bestMatchFromAppearancesWithNames:[NSArray arrayWithObjects:NSAppearanceNameAqua,
                                                                                      NSAppearanceNameDarkAqua, nil]];
          return [nearest isEqualToString:NSAppearanceNameDarkAqua] ? [NSColor linkColor] : [NSColor blueColor];
        }];
}

NSAttributedString* hyperlink(const TextRun& run, NSFont* font) {
    NSMutableAttributedString* const made =
        [[[NSMutableAttributedString alloc] initWithString:toNS(run.text)] autorelease];
    const NSRange all = NSMakeRange(0, [made length]);
    [made beginEditing];
    [made addAttribute:NSFontAttributeName value:font range:all];
    if (run.link) {
        NSString* const address = [[NSURL URLWithString:toNS(*run.link)] absoluteString];
        if (address != nil) {
            [made addAttribute:NSLinkAttributeName value:address range:all];
        }
    }
    NSColor* const color = run.color == TextColor::blue ? readableBlue() : [NSColor textColor];
    [made addAttribute:NSForegroundColorAttributeName value:color range:all];
    if (run.underline != UnderlineStyle::none) {
        [made addAttribute:NSUnderlineStyleAttributeName
                     value:[NSNumber numberWithInteger:static_cast<NSInteger>(run.underline)]
                     range:all];
    }
    [made endEditing];
    return made;
}

}  // namespace

NSString* shortened(NSString* text, NSUInteger longest) {
    if ([text length] <= longest) {
        return text;
    }
    const NSRange cut = [text rangeOfComposedCharacterSequenceAtIndex:longest];
    return [text substringToIndex:cut.location];
}

NSAttributedString* attributedText(const AttributedString& runs, NSFont* font) {
    NSMutableAttributedString* const whole = [[[NSMutableAttributedString alloc] init] autorelease];
    for (const TextRun& run : runs) {
        [whole appendAttributedString:hyperlink(run, font)];
    }
    return whole;
}

void openLink(NSString* address) {
    NSString* const scheme = [[[NSURL URLWithString:address] scheme] lowercaseString];
    NSArray* const safe = [NSArray arrayWithObjects:@"https", @"http", @"mailto", nil];
    auto* const workspace = host().workspace;
    if (scheme != nil && [safe containsObject:scheme] && workspace != nullptr) {
        callOut([workspace, address] { workspace->openURL(fromNS(address)); });
    }
}

}  // namespace platform::macos
