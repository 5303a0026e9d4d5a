// Sheets as a Mac's AppKit has them: beginSheet returns at once, the parent gets neither keys nor clicks while its
// sheet is up, and the modal delegate is told by endSheet. GNUstep's own run a loop until they end.
#import <AppKit/AppKit.h>
#import <objc/runtime.h>

@interface SheetSession : NSObject {
@public
    NSWindow* sheet;
    NSWindow* parent;
    id modalDelegate;  // not owned, as on a Mac
    SEL didEnd;
    void* context;
}
@end

@implementation SheetSession
@end

namespace {

NSMutableArray* sessions() {
    static NSMutableArray* const all = [[NSMutableArray alloc] init];
    return all;
}

SheetSession* sessionOf(NSWindow* sheet) {
    for (SheetSession* session in sessions()) {
        if (session->sheet == sheet) {
            return session;
        }
    }
    return nil;
}

void place(NSWindow* sheet, NSWindow* parent) {
    if (parent == nil) {
        [sheet center];
        return;
    }
    const NSRect above = [parent frame];
    NSRect frame = [sheet frame];
    frame.origin.x = above.origin.x + (above.size.width - frame.size.width) / 2;
    frame.origin.y = NSMaxY([parent contentRectForFrameRect:above]) - frame.size.height;
    [sheet setFrame:frame display:NO];
}

bool isInput(NSEventType type) {
    switch (type) {
        case NSLeftMouseDown:
        case NSLeftMouseUp:
        case NSRightMouseDown:
        case NSRightMouseUp:
        case NSKeyDown:
        case NSKeyUp:
        case NSScrollWheel:
            return true;
        default:
            return false;
    }
}

}  // namespace

// In the place of the class's own, on purpose.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

@implementation NSApplication (NonBlockingSheets)

- (void)beginSheet:(NSWindow*)sheet
    modalForWindow:(NSWindow*)docWindow
     modalDelegate:(id)modalDelegate
    didEndSelector:(SEL)didEndSelector
       contextInfo:(void*)contextInfo {
    if (docWindow != nil && [[NSUserDefaults standardUserDefaults] boolForKey:@"SheetsCannotBeShown"]) {
        [NSException raise:NSInternalInconsistencyException format:@"no sheets"];
    }
    SheetSession* const session = [[[SheetSession alloc] init] autorelease];
    session->sheet = sheet;
    session->parent = docWindow;
    session->modalDelegate = modalDelegate;
    session->didEnd = didEndSelector;
    session->context = contextInfo;
    [sessions() addObject:session];
    place(sheet, docWindow);
    [sheet makeKeyAndOrderFront:nil];
}

- (void)endSheet:(NSWindow*)sheet {
    [self endSheet:sheet returnCode:NSRunStoppedResponse];
}

- (void)endSheet:(NSWindow*)sheet returnCode:(NSInteger)returnCode {
    SheetSession* const session = [[sessionOf(sheet) retain] autorelease];
    if (session == nil) {
        return;
    }
    [sessions() removeObject:session];
    if (session->modalDelegate != nil && session->didEnd != nullptr) {
        using Told = void (*)(id, SEL, NSWindow*, NSInteger, void*);
        const auto told = reinterpret_cast<Told>([session->modalDelegate methodForSelector:session->didEnd]);
        told(session->modalDelegate, session->didEnd, sheet, returnCode, session->context);
    }
}

@end

@implementation NSWindow (NonBlockingSheets)

+ (void)load {
    method_exchangeImplementations(class_getInstanceMethod([NSWindow class], @selector(sendEvent:)),
                                   class_getInstanceMethod([NSWindow class], @selector(sendEventUnlessBlocked:)));
}

- (BOOL)isSheet {
    return sessionOf(self) != nil ? YES : NO;
}

- (NSWindow*)attachedSheet {
    for (SheetSession* session in sessions()) {
        if (session->parent == self) {
            return session->sheet;
        }
    }
    return nil;
}

- (void)sendEventUnlessBlocked:(NSEvent*)event {
    if ([self attachedSheet] != nil && isInput([event type])) {
        return;
    }
    [self sendEventUnlessBlocked:event];  // which is what sendEvent: was
}

@end
