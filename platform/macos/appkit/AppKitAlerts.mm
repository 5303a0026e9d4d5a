#import "platform/macos/appkit/AppKitAlerts.h"

#include <algorithm>
#include <utility>
#include <vector>

#import "platform/macos/appkit/AppKitControls.h"
#import "platform/macos/appkit/AppKitText.h"
#import "platform/macos/appkit/EventLoop.h"
#import "platform/macos/foundation/Guarded.h"
#import "platform/macos/foundation/Text.h"
#include "platform/ports/Host.h"

namespace platform::macos {

namespace {

constexpr NSUInteger longestText = 2000;  // characters; an alert grows with its text and does not scroll
constexpr NSUInteger longestTitle = 100;
constexpr NSInteger notShown = -1;

NSString* const escape = @"\033";

NSString* titleOrNil(const std::optional<std::string>& title) {
    return title ? shortened(toNS(*title), longestTitle) : nil;
}

// Nothing when the end has been cleared meanwhile. An alert that cannot be shown is answered: somebody may be waiting.
void showOn(NSWindow* window, NSAlert* alert, WickfieldCallback* end) {
    const bool shown = alert != nil && guarded("showing an alert", [=] {
                           if ([end isCleared]) {
                               return;
                           }
                           [end keepUntilEnd];
                           [alert beginSheetModalForWindow:window
                                             modalDelegate:end
                                            didEndSelector:@selector(sheetDidEnd:returnCode:contextInfo:)
                                               contextInfo:nullptr];
                       });
    if (!shown) {
        [end sheetDidEnd:alert returnCode:notShown contextInfo:nullptr];
    }
}

// An alert without a window while it runs a loop of its own.
struct Loop {
    NSWindow* window;
    bool left;  // to end as soon as it is the innermost, which alone can be ended
};

std::vector<Loop>& loops() {
    static auto* const running = new std::vector<Loop>;
    return *running;
}

void endInnermost() {
    if (!loops().empty() && loops().back().left && [NSApp modalWindow] == loops().back().window) {
        [NSApp stopModal];
        wakeEventLoop();
    }
}

void showAlone(NSAlert* alert, WickfieldCallback* end) {
    loops().push_back({[alert window], false});
    showOn(nil, alert, end);
    loops().pop_back();
    guarded("ending an alert", endInnermost);
}

// False when the window runs no loop.
bool leaveLoop(NSWindow* window) {
    const auto found = std::ranges::find(loops(), window, &Loop::window);
    if (found == loops().end()) {
        return false;
    }
    found->left = true;
    endInnermost();
    return true;
}

}  // namespace

AppKitAlert::AppKitAlert(const AlertContents& contents) {
    guarded("making an alert", [&] {
        m_alert = [[NSAlert alertWithMessageText:shortened(toNS(contents.messageText), longestText)
                                   defaultButton:titleOrNil(contents.defaultButton)
                                 alternateButton:titleOrNil(contents.alternateButton)
                                     otherButton:titleOrNil(contents.otherButton)
                       informativeTextWithFormat:@"%@", shortened(toNS(contents.informativeText), longestText)] retain];
        [[m_alert window] setPreventsApplicationTerminationWhenModal:NO];
    });
    if (contents.alternateButton) {
        giveEscape(*contents.alternateButton);
    }
    if (contents.suppressionKey) {
        addSuppression(*contents.suppressionKey);
    }
}

AppKitAlert::~AppKitAlert() {
    m_didEnd = nullptr;
    takeAway();
    guarded("letting an alert go", [this] {
        if ([m_alert showsSuppressionButton]) {
            [[m_alert suppressionButton] unbind:@"value"];
        }
        [m_alert release];
    });
}

// A key that user defaults cannot be observed by leaves the box without effect, not the alert unshown.
void AppKitAlert::addSuppression(const std::string& key) {
    guarded("binding an alert's suppression", [&] {
        [m_alert setShowsSuppressionButton:YES];
        [[m_alert suppressionButton] bind:@"value"
                                 toObject:[NSUserDefaults standardUserDefaults]
                              withKeyPath:toNS(key)
                                  options:nil];
    });
}

// The alert itself does so only for a button that is called "Cancel".
void AppKitAlert::giveEscape(const std::string& title) {
    guarded("setting an alert's keys", [&] {
        NSString* const wanted = titleOrNil(title);
        for (NSButton* button in [m_alert buttons]) {
            if ([[button keyEquivalent] length] == 0 && [[button title] isEqualToString:wanted]) {
                [button setKeyEquivalent:escape];
                return;
            }
        }
    });
}

void AppKitAlert::begin(Window* parent, std::function<void(long)> didEnd) {
    takeAway();
    m_didEnd = std::move(didEnd);
    const auto* const window = dynamic_cast<const AppKitWindow*>(parent);
    m_end = [[WickfieldCallback callbackWithWork:[this](long code) { answer(code); }] retain];
    if (window != nullptr) {
        showOn(window->window(), m_alert, m_end);
        return;
    }
    // From the event loop: without a window it may well run a loop of its own until it is answered.
    host().mainThread->perform([alert = [m_alert retain], end = [m_end retain]] {
        showAlone(alert, end);
        [alert release];
        [end release];
    });
}

bool AppKitAlert::isVisible() {
    bool visible = false;
    guarded("looking for an alert", [&] { visible = [[m_alert window] isVisible] == YES; });
    return visible;
}

void AppKitAlert::orderOut() {
    m_didEnd = nullptr;
    takeAway();
}

void AppKitAlert::answer(long code) {
    [[m_alert retain] autorelease];  // it is what calls; it may be let go below
    const auto ended = std::exchange(m_didEnd, nullptr);
    guarded("ending an alert", [this] {
        [m_end release];
        m_end = nil;
        [[m_alert window] orderOut:nil];
    });
    if (ended) {
        ended(code);
    }
}

// A window that is only ordered out would leave its parent waiting for the end of a sheet.
void AppKitAlert::takeAway() {
    if (m_end == nil) {
        return;
    }
    WickfieldCallback* const end = std::exchange(m_end, nil);
    [end clear];
    guarded("taking an alert away", [this] {
        NSWindow* const window = [m_alert window];
        if (!leaveLoop(window) && [window isSheet]) {
            [NSApp endSheet:window];
        }
        [window orderOut:nil];
    });
    [end release];
}

std::unique_ptr<Alert> AppKitAlerts::make(const AlertContents& contents) {
    return std::make_unique<AppKitAlert>(contents);
}

}  // namespace platform::macos
