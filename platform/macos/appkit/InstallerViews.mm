#import "platform/macos/appkit/InstallerViews.h"

#include <algorithm>
#include <cmath>

#import "platform/macos/appkit/AppKitText.h"
#import "platform/macos/appkit/LinkField.h"
#import "platform/macos/appkit/ViewParts.h"

using platform::macos::addButton;
using platform::macos::addLabel;
using platform::macos::addWrappingLabel;
using platform::macos::heightOf;
using platform::macos::widthOf;

namespace {

constexpr CGFloat left = 28;
constexpr CGFloat right = 24;
constexpr CGFloat top = 18;
constexpr CGFloat bottom = 16;
constexpr CGFloat rowGap = 14;
constexpr CGFloat lineGap = 3;
constexpr CGFloat wordGap = 3;
constexpr CGFloat controlGap = 8;
constexpr CGFloat spinnerSide = 16;
constexpr CGFloat sheetMargin = 20;
constexpr CGFloat leastLinkWidth = 90;

}  // namespace

@implementation WickfieldBackgroundView

- (void)dealloc {
    [m_image release];
    [super dealloc];
}

- (NSImage*)image {
    return m_image;
}

- (void)setImage:(NSImage*)image {
    [image retain];
    [m_image release];
    m_image = image;
    [self setNeedsDisplay:YES];
}

// An image view may show its image by other means than drawRect:.
- (BOOL)wantsUpdateLayer {
    return NO;
}

- (void)drawRect:(NSRect)dirty {
    static_cast<void>(dirty);
    const NSRect bounds = [self bounds];
    [[NSColor controlShadowColor] set];
    NSRectFill(bounds);
    const NSSize size = [[self image] size];
    if (size.width > 0 && size.height > 0 && bounds.size.width > 0 && bounds.size.height > 0) {
        const CGFloat scale = std::max(bounds.size.width / size.width, bounds.size.height / size.height);
        const NSSize seen = NSMakeSize(bounds.size.width / scale, bounds.size.height / scale);
        const NSRect part =
            NSMakeRect((size.width - seen.width) / 2, (size.height - seen.height) / 2, seen.width, seen.height);
        [[self image] drawInRect:bounds fromRect:part operation:NSCompositingOperationSourceOver fraction:1];
    }
}

@end

@implementation WickfieldInstallerView

- (instancetype)initWithFrame:(NSRect)frame {
    self = [super initWithFrame:frame];
    if (self != nil) {
        bgImageView = [[[WickfieldBackgroundView alloc] initWithFrame:NSZeroRect] autorelease];
        [bgImageView setAccessibilityLabel:@"Background image"];
        [self addSubview:bgImageView];
        NSFont* const usual = [NSFont systemFontOfSize:[NSFont systemFontSize]];
        textPluginName = addLabel(self, @"Plug-in", [NSFont boldSystemFontOfSize:22]);
        versionCaption = addLabel(self, @"Version", usual);
        textPluginVersion = addLabel(self, @"1.0", usual);
        textPluginAuthor = addLabel(self, @"by Author", usual);
        tallowmereLinkText = addWrappingLabel(self, [WickfieldLinkField class], @"",
                                              [NSFont systemFontOfSize:[NSFont smallSystemFontSize]]);
        spinner = [[[NSProgressIndicator alloc] initWithFrame:NSZeroRect] autorelease];
        [spinner setStyle:NSProgressIndicatorStyleSpinning];
        [spinner setControlSize:NSControlSizeSmall];
        [spinner setIndeterminate:YES];
        [spinner setDisplayedWhenStopped:NO];
        [spinner setAccessibilityLabel:@"Installing"];
        [self addSubview:spinner];
        btnGantry = addButton(self, @"Send to Gantry…", @"");
        btnInstall = addButton(self, @"Install", @"\r");
        [tallowmereLinkText setNextKeyView:btnGantry];
        [btnGantry setNextKeyView:btnInstall];
        [btnInstall setNextKeyView:tallowmereLinkText];
        [self resizeSubviewsWithOldSize:frame.size];
    }
    return self;
}

- (void)resizeSubviewsWithOldSize:(NSSize)oldSize {
    static_cast<void>(oldSize);
    const NSSize size = [self bounds].size;
    CGFloat y = bottom;
    y += [self placeActionsIn:size] + rowGap;
    y += [self placeDetailsAt:y in:size] + lineGap;
    const CGFloat nameHeight = heightOf(textPluginName);
    [textPluginName setFrame:NSMakeRect(left, y, std::max<CGFloat>(size.width - left - right, 0), nameHeight)];
    y += nameHeight + top;
    [bgImageView setFrame:NSMakeRect(0, y, size.width, std::max<CGFloat>(size.height - y, 0))];
    [self setNeedsDisplay:YES];
}

// The branding line at the left, the spinner and the buttons at the right. Returns the row's height.
- (CGFloat)placeActionsIn:(NSSize)size {
    const CGFloat buttonHeight = heightOf(btnInstall);
    CGFloat x = size.width - right - widthOf(btnInstall);
    const CGFloat installX = x;
    if (![btnGantry isHidden]) {
        x -= widthOf(btnGantry) + controlGap;
    }
    const CGFloat gantryX = x;
    x -= spinnerSide + controlGap;
    const CGFloat linkWidth = std::max(x - controlGap - left, leastLinkWidth);
    const CGFloat linkHeight = heightOf(tallowmereLinkText, linkWidth);
    const CGFloat height = std::max(buttonHeight, linkHeight);
    const auto centred = [height](CGFloat part) { return bottom + std::floor((height - part) / 2); };
    [btnInstall setFrame:NSMakeRect(installX, centred(buttonHeight), widthOf(btnInstall), buttonHeight)];
    [btnGantry setFrame:NSMakeRect(gantryX, centred(buttonHeight), widthOf(btnGantry), buttonHeight)];
    [spinner setFrame:NSMakeRect(x, centred(spinnerSide), spinnerSide, spinnerSide)];
    [tallowmereLinkText setFrame:NSMakeRect(left, centred(linkHeight), linkWidth, linkHeight)];
    return height;
}

// "Version", the version and the author in one line. A version may take half of it, the author what is left.
- (CGFloat)placeDetailsAt:(CGFloat)y in:(NSSize)size {
    const CGFloat height = heightOf(textPluginVersion);
    const CGFloat end = size.width - right;
    CGFloat x = left;
    [versionCaption setFrame:NSMakeRect(x, y, widthOf(versionCaption), height)];
    x += widthOf(versionCaption) + wordGap;
    const CGFloat free = std::max<CGFloat>(end - x - wordGap, 0);
    const CGFloat author = widthOf(textPluginAuthor);
    const CGFloat version = std::min(widthOf(textPluginVersion), std::max(free / 2, free - author));
    [textPluginVersion setFrame:NSMakeRect(x, y, version, height)];
    x += version + wordGap;
    [textPluginAuthor setFrame:NSMakeRect(x, y, std::max<CGFloat>(std::min(author, end - x), 0), height)];
    return height;
}

@end

@implementation WickfieldAgreementView

- (instancetype)initWithFrame:(NSRect)frame {
    self = [super initWithFrame:frame];
    if (self != nil) {
        caption = addWrappingLabel(self, [NSTextField class], @"Please read the licence agreement before you install.",
                                   [NSFont systemFontOfSize:[NSFont systemFontSize]]);
        [self addText];
        btnDisagree = addButton(self, @"Disagree", @"\033");
        btnAgree = addButton(self, @"Agree", @"\r");
        [eulaText setNextKeyView:btnDisagree];
        [btnDisagree setNextKeyView:btnAgree];
        [btnAgree setNextKeyView:eulaText];
        [self resizeSubviewsWithOldSize:frame.size];
    }
    return self;
}

- (void)dealloc {
    [eulaText setDelegate:nil];
    [super dealloc];
}

- (void)addText {
    const NSRect place = NSMakeRect(0, 0, 400, 200);
    scroller = [[[NSScrollView alloc] initWithFrame:place] autorelease];
    [scroller setHasVerticalScroller:YES];
    [scroller setBorderType:NSBezelBorder];
    const NSSize inside = [scroller contentSize];
    eulaText = [[[NSTextView alloc] initWithFrame:NSMakeRect(0, 0, inside.width, inside.height)] autorelease];
    [eulaText setMinSize:NSMakeSize(0, inside.height)];
    [eulaText setMaxSize:NSMakeSize(1.0e7, 1.0e7)];
    [eulaText setVerticallyResizable:YES];
    [eulaText setHorizontallyResizable:NO];
    [eulaText setAutoresizingMask:NSViewWidthSizable];
    [[eulaText textContainer] setContainerSize:NSMakeSize(inside.width, 1.0e7)];
    [[eulaText textContainer] setWidthTracksTextView:YES];
    [eulaText setTextContainerInset:NSMakeSize(6, 6)];
    [eulaText setRichText:YES];
    [eulaText setImportsGraphics:YES];
    [eulaText setBackgroundColor:[NSColor textBackgroundColor]];
    [eulaText setAccessibilityLabel:@"Licence agreement"];
    [eulaText setDelegate:self];
    [scroller setDocumentView:eulaText];
    [self addSubview:scroller];
}

- (void)resizeSubviewsWithOldSize:(NSSize)oldSize {
    static_cast<void>(oldSize);
    const NSSize size = [self bounds].size;
    const CGFloat width = std::max<CGFloat>(size.width - 2 * sheetMargin, 0);
    const CGFloat buttonHeight = heightOf(btnAgree);
    CGFloat x = size.width - sheetMargin - widthOf(btnAgree);
    [btnAgree setFrame:NSMakeRect(x, bottom, widthOf(btnAgree), buttonHeight)];
    x -= controlGap + widthOf(btnDisagree);
    [btnDisagree setFrame:NSMakeRect(x, bottom, widthOf(btnDisagree), buttonHeight)];
    const CGFloat captionHeight = heightOf(caption, width);
    const CGFloat captionY = size.height - top - captionHeight;
    [caption setFrame:NSMakeRect(sheetMargin, captionY, width, captionHeight)];
    const CGFloat textY = bottom + buttonHeight + rowGap;
    [scroller setFrame:NSMakeRect(sheetMargin, textY, width, std::max<CGFloat>(captionY - controlGap - textY, 0))];
}

- (BOOL)textView:(NSTextView*)textView doCommandBySelector:(SEL)command {
    if (command == @selector(insertNewline:)) {
        [btnAgree performClick:self];
    } else if (command == @selector(cancelOperation:)) {
        [btnDisagree performClick:self];
    } else if (command == @selector(insertTab:)) {
        [[textView window] selectNextKeyView:textView];
    } else if (command == @selector(insertBacktab:)) {
        [[textView window] selectPreviousKeyView:textView];
    } else {
        return NO;
    }
    return YES;
}

- (BOOL)textView:(NSTextView*)textView clickedOnLink:(id)link atIndex:(NSUInteger)index {
    static_cast<void>(textView);
    static_cast<void>(index);
    platform::macos::openLink([link isKindOfClass:[NSURL class]] ? [link absoluteString] : [link description]);
    return YES;
}

@end
