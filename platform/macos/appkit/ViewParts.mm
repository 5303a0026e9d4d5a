#import "platform/macos/appkit/ViewParts.h"

#include <algorithm>
#include <cmath>

namespace platform::macos {

namespace {

constexpr CGFloat leastButtonWidth = 84;
constexpr CGFloat tallest = 10000;
constexpr CGFloat cellMargins = 4;

NSTextField* add(NSView* view, Class kind, NSString* text, NSFont* font) {
    NSTextField* const label = [[[kind alloc] initWithFrame:NSZeroRect] autorelease];
    [label setBezeled:NO];
    [label setBordered:NO];
    [label setDrawsBackground:NO];
    [label setEditable:NO];
    [label setSelectable:NO];
    [label setFont:font];
    [label setTextColor:[NSColor controlTextColor]];
    [[label cell] setLineBreakMode:NSLineBreakByTruncatingTail];
    [[label cell] setUsesSingleLineMode:YES];
    [label setStringValue:text];
    [view addSubview:label];
    return label;
}

}  // namespace

NSTextField* addLabel(NSView* view, NSString* text, NSFont* font) { return add(view, [NSTextField class], text, font); }

NSTextField* addWrappingLabel(NSView* view, Class kind, NSString* text, NSFont* font) {
    NSTextField* const label = add(view, kind, text, font);
    [[label cell] setUsesSingleLineMode:NO];
    [[label cell] setWraps:YES];
    [[label cell] setLineBreakMode:NSLineBreakByWordWrapping];
    return label;
}

NSButton* addButton(NSView* view, NSString* title, NSString* keyEquivalent) {
    NSButton* const button = [[[NSButton alloc] initWithFrame:NSZeroRect] autorelease];
    [button setButtonType:NSButtonTypeMomentaryPushIn];
    [button setBezelStyle:NSBezelStyleRounded];
    [button setTitle:title];
    [button setKeyEquivalent:keyEquivalent];
    [view addSubview:button];
    return button;
}

CGFloat widthOf(NSTextField* label) { return std::ceil([[label cell] cellSize].width); }

CGFloat widthOf(NSButton* button) { return std::max(leastButtonWidth, std::ceil([[button cell] cellSize].width)); }

CGFloat heightOf(NSControl* control) { return std::ceil([[control cell] cellSize].height); }

// The cell keeps a little of the width to itself, and may answer for one line.
CGFloat heightOf(NSTextField* label, CGFloat width) {
    const NSSize inside = NSMakeSize(std::max<CGFloat>(width - cellMargins, 1), tallest);
    const NSRect lines = [[label attributedStringValue] boundingRectWithSize:inside
                                                                     options:NSStringDrawingUsesLineFragmentOrigin];
    const NSSize cell = [[label cell] cellSizeForBounds:NSMakeRect(0, 0, std::max<CGFloat>(width, 1), tallest)];
    return std::ceil(std::max(lines.size.height, cell.height));
}

}  // namespace platform::macos
