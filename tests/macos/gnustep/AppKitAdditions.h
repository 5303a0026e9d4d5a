// What a Mac's AppKit has and GNUstep's lacks, as far as the installer's window uses it; seen before each of its
// sources where they are built against GNUstep. Newer names of constants, and declarations of what the run implements.
#pragma once

#ifdef __OBJC__

#import <AppKit/AppKit.h>

#define NSEventTypeApplicationDefined NSApplicationDefined
#define NSEventTypeLeftMouseDown NSLeftMouseDown
#define NSEventMaskAny NSAnyEventMask
#define NSEventModifierFlagCommand NSCommandKeyMask
#define NSEventModifierFlagOption NSAlternateKeyMask
#define NSButtonTypeMomentaryPushIn NSMomentaryPushInButton
#define NSBezelStyleRounded NSRoundedBezelStyle
#define NSControlSizeSmall NSSmallControlSize
#define NSProgressIndicatorStyleSpinning NSProgressIndicatorSpinningStyle
#define NSCompositingOperationSourceOver NSCompositeSourceOver

@interface NSAlert (AppKitAdditions)
- (void)setShowsSuppressionButton:(BOOL)shows;
- (BOOL)showsSuppressionButton;
- (NSButton*)suppressionButton;
@end

@interface NSApplication (AppKitAdditions)
- (BOOL)isFullKeyboardAccessEnabled;
@end

@interface NSWindow (NonBlockingSheets)
- (BOOL)isSheet;
@end

@interface NSWindow (AppKitAdditions)
- (void)setPreventsApplicationTerminationWhenModal:(BOOL)prevents;
@end

@interface NSView (AppKitAdditions)
- (void)setAccessibilityLabel:(NSString*)label;
- (NSString*)accessibilityLabel;
@end

@interface NSColor (AppKitAdditions)
+ (NSColor*)colorWithName:(NSString*)name dynamicProvider:(NSColor* (^)(NSAppearance*))provider;
+ (NSColor*)linkColor;
@end

#endif
