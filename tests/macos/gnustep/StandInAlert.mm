// NSAlert's older interface as a Mac has it: the codes 1, 0 and -1, a suppression box, a window that is there before
// the alert is shown, and a sheet that does not block. It keeps neither itself nor its delegate alive.
#import <AppKit/AppKit.h>

namespace {

constexpr CGFloat panelWidth = 420;
constexpr CGFloat margin = 20;
constexpr CGFloat gap = 8;

}  // namespace

@interface StandInAlert : NSAlert {
    NSPanel* m_panel;
    NSMutableArray* m_buttons;  // default, alternate, other
    NSButton* m_suppression;
    id m_delegate;
    SEL m_didEnd;
    void* m_context;
}
- (void)build:(NSArray*)titles;
@end

@implementation StandInAlert

- (void)dealloc {
    [NSApp endSheet:m_panel returnCode:0];
    for (NSButton* button in m_buttons) {
        [button setTarget:nil];
    }
    [m_panel orderOut:nil];
    [m_panel release];
    [m_buttons release];
    [m_suppression release];
    [super dealloc];
}

- (NSTextField*)addText:(NSString*)text bold:(BOOL)bold at:(CGFloat)y {
    NSTextField* const field = [[[NSTextField alloc] initWithFrame:NSZeroRect] autorelease];
    [field setBezeled:NO];
    [field setDrawsBackground:NO];
    [field setEditable:NO];
    [field setFont:bold ? [NSFont boldSystemFontOfSize:13] : [NSFont systemFontOfSize:12]];
    [[field cell] setWraps:YES];
    [field setStringValue:text];
    const CGFloat width = panelWidth - 2 * margin;
    const NSSize size = [[field cell] cellSizeForBounds:NSMakeRect(0, 0, width, 10000)];
    [field setFrame:NSMakeRect(margin, y, width, size.height)];
    [[m_panel contentView] addSubview:field];
    return field;
}

- (void)addButtons:(NSArray*)titles {
    const NSInteger codes[] = {NSAlertDefaultReturn, NSAlertAlternateReturn, NSAlertOtherReturn};
    CGFloat x = panelWidth - margin;
    for (NSUInteger index = 0; index < 3; ++index) {
        NSString* const title = [titles objectAtIndex:index];
        if ([title length] == 0) {
            continue;
        }
        NSButton* const button = [[[NSButton alloc] initWithFrame:NSZeroRect] autorelease];
        [button setTitle:title];
        [button setTag:codes[index]];
        [button setTarget:self];
        [button setAction:@selector(answer:)];
        [button setKeyEquivalent:index == 0 ? @"\r" : [title isEqualToString:@"Cancel"] ? @"\033" : @""];
        [button sizeToFit];
        const CGFloat width = [button frame].size.width + 24;
        x -= width;
        [button setFrame:NSMakeRect(x, margin, width, 26)];
        x -= gap;
        [m_buttons addObject:button];
        [[m_panel contentView] addSubview:button];
    }
}

- (void)build:(NSArray*)titles {
    m_panel = [[NSPanel alloc] initWithContentRect:NSMakeRect(0, 0, panelWidth, 100)
                                         styleMask:NSTitledWindowMask
                                           backing:NSBackingStoreBuffered
                                             defer:YES];
    [m_panel setReleasedWhenClosed:NO];
    [m_panel setHidesOnDeactivate:NO];
    [m_panel setTitle:@"Alert"];
    m_buttons = [[NSMutableArray alloc] init];
    [self addButtons:titles];
    CGFloat y = margin + 26 + margin + 24;
    y += [[self addText:[self informativeText] bold:NO at:y] frame].size.height + gap;
    y += [[self addText:[self messageText] bold:YES at:y] frame].size.height + margin;
    [m_panel setContentSize:NSMakeSize(panelWidth, y)];
}

- (NSArray*)buttons {
    return m_buttons;
}

- (id)window {
    return m_panel;
}

- (void)setShowsSuppressionButton:(BOOL)shows {
    if (shows && m_suppression == nil) {
        m_suppression = [[NSButton alloc] initWithFrame:NSMakeRect(margin, margin + 26 + gap, 300, 20)];
        [m_suppression setButtonType:NSSwitchButton];
        [m_suppression setTitle:@"Do not show this message again"];
        [[m_panel contentView] addSubview:m_suppression];
    }
}

- (BOOL)showsSuppressionButton {
    return m_suppression != nil;
}

- (NSButton*)suppressionButton {
    return m_suppression;
}

- (void)answer:(NSButton*)sender {
    if ([NSApp modalWindow] == m_panel) {
        [NSApp stopModalWithCode:[sender tag]];
    } else {
        [NSApp endSheet:m_panel returnCode:[sender tag]];
    }
}

- (void)beginSheetModalForWindow:(NSWindow*)window
                   modalDelegate:(id)delegate
                  didEndSelector:(SEL)didEndSelector
                     contextInfo:(void*)contextInfo {
    m_delegate = delegate;
    m_didEnd = didEndSelector;
    m_context = contextInfo;
    // What becomes of an alert without a window is not written down: the installer is to get on with either.
    if (window == nil && [[NSUserDefaults standardUserDefaults] boolForKey:@"FreeStandingAlertsRunALoop"]) {
        [[self retain] autorelease];
        [self panelDidEnd:m_panel returnCode:[NSApp runModalForWindow:m_panel] contextInfo:nullptr];
        return;
    }
    [NSApp beginSheet:m_panel
        modalForWindow:window
         modalDelegate:self
        didEndSelector:@selector(panelDidEnd:returnCode:contextInfo:)
           contextInfo:nullptr];
}

- (void)panelDidEnd:(NSWindow*)panel returnCode:(NSInteger)returnCode contextInfo:(void*)contextInfo {
    static_cast<void>(contextInfo);
    NSWindow* const shown = [[panel retain] autorelease];
    using Told = void (*)(id, SEL, NSAlert*, NSInteger, void*);
    const auto told = reinterpret_cast<Told>([m_delegate methodForSelector:m_didEnd]);
    told(m_delegate, m_didEnd, self, returnCode, m_context);
    [shown orderOut:nil];
}

@end

// In the place of the class's own, on purpose.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

@implementation NSAlert (StandIn)

+ (NSAlert*)alertWithMessageText:(NSString*)message
                   defaultButton:(NSString*)defaultButton
                 alternateButton:(NSString*)alternateButton
                     otherButton:(NSString*)otherButton
       informativeTextWithFormat:(NSString*)format, ... {
    va_list arguments;
    va_start(arguments, format);
    NSString* const text = [[[NSString alloc] initWithFormat:format arguments:arguments] autorelease];
    va_end(arguments);
    StandInAlert* const alert = [[[StandInAlert alloc] init] autorelease];
    [alert setMessageText:message];
    [alert setInformativeText:text];
    [alert build:[NSArray arrayWithObjects:defaultButton != nil ? defaultButton : @"OK",
                                           alternateButton != nil ? alternateButton : @"",
                                           otherButton != nil ? otherButton : @"", nil]];
    return alert;
}

@end
