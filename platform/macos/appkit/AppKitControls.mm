#import "platform/macos/appkit/AppKitControls.h"

#import "platform/macos/appkit/AppKitText.h"
#import "platform/macos/foundation/Guarded.h"
#import "platform/macos/foundation/Text.h"

namespace platform::macos {

namespace {

constexpr NSUInteger longestLine = 1000;  // characters; a line of megabytes would take seconds to measure

void hide(NSView* view, bool hidden) {
    guarded("hiding a view", [&] {
        [view setHidden:hidden ? YES : NO];
        [[view superview] resizeSubviewsWithOldSize:[[view superview] frame].size];
    });
}

// What stands beside a text moves with it.
void textChanged(NSTextField* field) {
    [field setToolTip:[field stringValue]];
    [[field superview] resizeSubviewsWithOldSize:[[field superview] frame].size];
}

// A white ground that a document brings along would hide white text on it: behind words, and in tables.
void removeGrounds(NSTextStorage* storage) {
    [storage removeAttribute:NSBackgroundColorAttributeName range:NSMakeRange(0, [storage length])];
    NSRange range = NSMakeRange(0, 0);
    for (NSUInteger index = 0; index < [storage length]; index = NSMaxRange(range)) {
        NSParagraphStyle* const style = [storage attribute:NSParagraphStyleAttributeName
                                                   atIndex:index
                                            effectiveRange:&range];
        for (NSTextBlock* block in [style textBlocks]) {
            [block setBackgroundColor:nil];
            if ([block isKindOfClass:[NSTextTableBlock class]]) {
                [[static_cast<NSTextTableBlock*>(block) table] setBackgroundColor:nil];
            }
        }
    }
}

}  // namespace

void AppKitTextField::setHidden(bool hidden) { hide(m_field, hidden); }

void AppKitTextField::setStringValue(const std::string& text) {
    guarded("setting a text", [&] {
        [m_field setStringValue:shortened(toNS(text), longestLine)];
        textChanged(m_field);
    });
}

void AppKitTextField::setAttributedStringValue(const AttributedString& text) {
    guarded("setting a text with attributes", [&] {
        [m_field setAttributedStringValue:attributedText(text, [m_field font])];
        textChanged(m_field);
    });
}

void AppKitTextField::setSelectable(bool selectable) {
    guarded("making a text selectable", [&] { [m_field setSelectable:selectable ? YES : NO]; });
}

void AppKitTextField::setAllowsEditingTextAttributes(bool allows) {
    guarded("allowing text attributes", [&] { [m_field setAllowsEditingTextAttributes:allows ? YES : NO]; });
}

void AppKitButton::setHidden(bool hidden) { hide(m_button, hidden); }

void AppKitButton::setEnabled(bool enabled) {
    guarded("enabling a button", [&] {
        NSWindow* const window = [m_button window];
        if (!enabled && [window firstResponder] == m_button) {
            [window makeFirstResponder:nil];  // else the next button would get the keyboard, and the next Space with it
        }
        [m_button setEnabled:enabled ? YES : NO];
    });
}

void AppKitProgressIndicator::setHidden(bool hidden) { hide(m_indicator, hidden); }

void AppKitProgressIndicator::startAnimation() {
    guarded("starting the spinner", [&] { [m_indicator startAnimation:nil]; });
}

void AppKitProgressIndicator::stopAnimation() {
    guarded("stopping the spinner", [&] { [m_indicator stopAnimation:nil]; });
}

void AppKitImageView::setHidden(bool hidden) { hide(m_view, hidden); }

void AppKitImageView::setImage(std::unique_ptr<Image> image) {
    guarded("showing an image", [&] {
        const auto* const loaded = dynamic_cast<const AppKitImage*>(image.get());
        [m_view setImage:loaded != nullptr ? loaded->image() : nil];
    });
}

void AppKitTextView::setHidden(bool hidden) { hide(m_view, hidden); }

void AppKitTextView::setDocument(std::unique_ptr<Document> document) {
    guarded("showing a document", [&] {
        const auto* const loaded = dynamic_cast<const AppKitDocument*>(document.get());
        NSAttributedString* const text =
            loaded != nullptr ? loaded->text() : [[[NSAttributedString alloc] init] autorelease];
        [[m_view textStorage] setAttributedString:text];
        [m_view scrollRangeToVisible:NSMakeRange(0, 0)];
    });
}

void AppKitTextView::setStandardTextColor() {
    guarded("colouring a document", [&] {
        NSTextStorage* const storage = [m_view textStorage];
        [storage beginEditing];
        removeGrounds(storage);
        [storage endEditing];
        [m_view setTextColor:[NSColor textColor]];
    });
}

void AppKitTextView::setEditable(bool editable) {
    guarded("making a document editable", [&] { [m_view setEditable:editable ? YES : NO]; });
}

void AppKitWindow::setTitle(const std::string& title) {
    guarded("setting a title", [&] { [m_window setTitle:shortened(toNS(title), longestLine)]; });
}

void AppKitWindow::orderOut() {
    guarded("taking a window away", [&] { [m_window orderOut:nil]; });
}

void AppKitWindow::makeKeyAndOrderFront() {
    guarded("bringing a window to the front", [&] { [m_window makeKeyAndOrderFront:nil]; });
}

bool AppKitWindow::hasAttachedSheet() {
    bool attached = false;
    guarded("looking for a sheet", [&] { attached = [m_window attachedSheet] != nil; });
    return attached;
}

}  // namespace platform::macos
