// The views that the window and the agreement's sheet consist of. They arrange what they contain in code, at any size.
#pragma once

#import <AppKit/AppKit.h>

// Fills itself with its image, cut at the sides that do not fit; a quiet backdrop without one.
@interface WickfieldBackgroundView : NSImageView {
@private
    NSImage* m_image;  // not the image view's own, which it would draw a second time
}
@end

// The contents of the main window, whose controls belong to it.
@interface WickfieldInstallerView : NSView {
@public
    WickfieldBackgroundView* bgImageView;
    NSTextField* textPluginName;
    NSTextField* versionCaption;
    NSTextField* textPluginVersion;
    NSTextField* textPluginAuthor;
    NSTextField* tallowmereLinkText;
    NSProgressIndicator* spinner;
    NSButton* btnGantry;
    NSButton* btnInstall;
}
@end

// The contents of the agreement's sheet. Return agrees and Escape declines, also while the text has the keyboard.
@interface WickfieldAgreementView : NSView <NSTextViewDelegate> {
@public
    NSTextField* caption;
    NSScrollView* scroller;
    NSTextView* eulaText;
    NSButton* btnDisagree;
    NSButton* btnAgree;
}
@end
