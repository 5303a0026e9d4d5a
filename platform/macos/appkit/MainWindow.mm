#import "platform/macos/appkit/MainWindow.h"

#include <algorithm>
#include <utility>

#import "platform/macos/appkit/AppKitControls.h"
#import "platform/macos/foundation/Guarded.h"

namespace platform::macos {

namespace {

constexpr CGFloat windowWidth = 660;
constexpr CGFloat windowHeight = 440;
constexpr CGFloat leastWidth = 400;
constexpr CGFloat leastHeight = 240;
constexpr CGFloat sheetWidth = 560;
constexpr CGFloat sheetHeight = 380;

NSWindow* makeWindow(NSSize size, NSUInteger style, NSString* title) {
    NSWindow* const window = [[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, size.width, size.height)
                                                         styleMask:style
                                                           backing:NSBackingStoreBuffered
                                                             defer:YES];
    [window setReleasedWhenClosed:NO];
    [window setTitle:title];
    [window setContentMinSize:NSMakeSize(leastWidth, leastHeight)];
    return window;
}

}  // namespace

struct MainWindow::Controls {
    Controls(NSWindow* main, NSWindow* agreement, WickfieldInstallerView* view, WickfieldAgreementView* agreementView)
        : window(main),
          textPluginName(view->textPluginName),
          textPluginAuthor(view->textPluginAuthor),
          textPluginVersion(view->textPluginVersion),
          spinner(view->spinner),
          btnInstall(view->btnInstall),
          tallowmereLinkText(view->tallowmereLinkText),
          bgImageView(view->bgImageView),
          btnGantry(view->btnGantry),
          windowEULA(agreement),
          eulaText(agreementView->eulaText) {}

    AppKitWindow window;
    AppKitTextField textPluginName;
    AppKitTextField textPluginAuthor;
    AppKitTextField textPluginVersion;
    AppKitProgressIndicator spinner;
    AppKitButton btnInstall;
    AppKitTextField tallowmereLinkText;
    AppKitImageView bgImageView;
    AppKitButton btnGantry;
    AppKitWindow windowEULA;
    AppKitTextView eulaText;
};

MainWindow::MainWindow() : m_actions([[NSMutableArray alloc] init]) {
    const NSUInteger sheetStyle = NSWindowStyleMaskTitled | NSWindowStyleMaskResizable;
    m_window = makeWindow(NSMakeSize(windowWidth, windowHeight),
                          sheetStyle | NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable, @"Installer");
    m_agreement = makeWindow(NSMakeSize(sheetWidth, sheetHeight), sheetStyle, @"Licence Agreement");
    [m_agreement setPreventsApplicationTerminationWhenModal:NO];

    m_view = [[WickfieldInstallerView alloc] initWithFrame:NSMakeRect(0, 0, windowWidth, windowHeight)];
    [m_window setContentView:m_view];
    [m_window setInitialFirstResponder:m_view->btnInstall];
    m_agreementView = [[WickfieldAgreementView alloc] initWithFrame:NSMakeRect(0, 0, sheetWidth, sheetHeight)];
    [m_agreement setContentView:m_agreementView];
    [m_agreement setInitialFirstResponder:m_agreementView->eulaText];

    m_controls = std::make_unique<Controls>(m_window, m_agreement, m_view, m_agreementView);
    auto& controls = *m_controls;
    m_outlets = {&controls.window,
                 &controls.textPluginName,
                 &controls.textPluginAuthor,
                 &controls.textPluginVersion,
                 &controls.spinner,
                 &controls.btnInstall,
                 &controls.tallowmereLinkText,
                 &controls.bgImageView,
                 &controls.btnGantry,
                 &controls.windowEULA,
                 &controls.eulaText};
}

MainWindow::~MainWindow() {
    for (NSButton *button in [NSArray arrayWithObjects:m_view->btnInstall, m_view->btnGantry, m_agreementView->btnAgree,
                                                       m_agreementView->btnDisagree, nil]) {
        [button setTarget:nil];
    }
    [m_actions release];
    [m_view release];
    [m_agreementView release];
    [m_window release];
    [m_agreement release];
}

void MainWindow::connect(NSButton* button, std::function<void()> action) {
    WickfieldCallback* const target =
        [WickfieldCallback callbackWithWork:[action = std::move(action)](long) { action(); }];
    [m_actions addObject:target];
    [button setTarget:target];
    [button setAction:@selector(perform:)];
}

void MainWindow::connectActions(ApplicationDelegate& delegate) {
    connect(m_view->btnInstall, [&delegate] { delegate.install(); });
    connect(m_view->btnGantry, [&delegate] { delegate.sendToGantry(); });
    connect(m_agreementView->btnAgree, [&delegate] { delegate.eulaAgree(); });
    connect(m_agreementView->btnDisagree, [&delegate] { delegate.eulaDisagree(); });
}

void MainWindow::present() {
    guarded("showing the window", [this] {
        NSScreen* const screen = [NSScreen mainScreen];
        if (screen != nil) {
            const NSRect area = [screen visibleFrame];
            NSRect frame = [m_window frame];
            frame.size.width = std::min(frame.size.width, area.size.width);
            frame.size.height = std::min(frame.size.height, area.size.height);
            [m_window setFrame:frame display:NO];
        }
        [m_window center];
        [m_window makeKeyAndOrderFront:nil];
        if (![NSApp isFullKeyboardAccessEnabled]) {
            // Buttons are passed over then, and the next that takes the keyboard is the link, which nobody asked for.
            [m_window makeFirstResponder:nil];
        }
    });
}

}  // namespace platform::macos
