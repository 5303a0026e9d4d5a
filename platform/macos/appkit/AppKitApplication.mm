#import "platform/macos/appkit/AppKitApplication.h"

#include <cstdlib>
#include <utility>

#import "platform/macos/appkit/AgreementText.h"
#import "platform/macos/appkit/AppKitControls.h"
#include "platform/macos/appkit/Callout.h"
#import "platform/macos/foundation/Guarded.h"
#import "platform/macos/foundation/Text.h"

namespace platform::macos {

namespace {

// A pipe, for instance, would be waited for.
NSString* kindOfFile(NSString* path) {
    NSString* const real = [path stringByResolvingSymlinksInPath];
    return [[[NSFileManager defaultManager] attributesOfItemAtPath:real error:nullptr] fileType];
}

}  // namespace

void AppKitApplication::terminate() {
    const auto end = [] {
        // Refused otherwise while an alert panel is up.
        for (NSWindow* window in [NSApp windows]) {
            [window setPreventsApplicationTerminationWhenModal:NO];
        }
        [NSApp terminate:nil];
    };
    if (!m_finished && !guarded("terminating", end)) {
        finish();
        std::_Exit(EXIT_FAILURE);  // better than a process without windows that nobody can end
    }
}

void AppKitApplication::onWillTerminate(std::function<void()> observer) {
    const std::lock_guard lock(m_mutex);
    m_observers.push_back(std::move(observer));
}

void AppKitApplication::finish() {
    if (std::exchange(m_finished, true)) {
        return;
    }
    for (;;) {
        std::function<void()> observer;
        {
            const std::lock_guard lock(m_mutex);
            if (m_observers.empty()) {
                return;
            }
            observer = std::move(m_observers.back());
            m_observers.pop_back();
        }
        callOut(observer);
    }
}

void AppKitApplication::beginSheet(Window& sheet, Window& parent, std::function<void()> didEnd) {
    const auto* const contents = dynamic_cast<const AppKitWindow*>(&sheet);
    const auto* const window = dynamic_cast<const AppKitWindow*>(&parent);
    if (contents == nullptr || window == nullptr || contents == window) {
        return;
    }
    endSheet(sheet);
    NSWindow* const shown = contents->window();
    WickfieldCallback* const end =
        [WickfieldCallback callbackWithWork:[this, shown, didEnd](long) { sheetEnded(shown, didEnd); }];
    m_sheets[shown] = end;
    const bool isUp = guarded("showing a sheet", [&] {
        [end keepUntilEnd];
        [NSApp beginSheet:shown
            modalForWindow:window->window()
             modalDelegate:end
            didEndSelector:@selector(sheetDidEnd:returnCode:contextInfo:)
               contextInfo:nullptr];
    });
    if (!isUp) {  // the window would be free to be used without what the sheet asks
        m_sheets.erase(shown);
        [end clear];
        [end sheetDidEnd:shown returnCode:0 contextInfo:nullptr];
        terminate();
    }
}

void AppKitApplication::sheetEnded(NSWindow* sheet, const std::function<void()>& didEnd) {
    m_sheets.erase(sheet);
    callOut(didEnd);
}

void AppKitApplication::endSheet(Window& sheet) {
    const auto* const contents = dynamic_cast<const AppKitWindow*>(&sheet);
    if (contents == nullptr || m_sheets.find(contents->window()) == m_sheets.end()) {
        return;
    }
    guarded("ending a sheet", [contents] { [NSApp endSheet:contents->window()]; });
}

void AppKitApplication::runAlertPanel(const std::string& title, const std::string& message) {
    guarded("showing an alert panel", [&] {
        [NSApp activateIgnoringOtherApps:YES];
        NSString* const none = nil;  // the host's default button then
        NSRunAlertPanel(toNS(title), @"%@", none, none, none, toNS(message));
    });
}

std::unique_ptr<Image> AppKitApplication::loadImage(const std::string& path) {
    std::unique_ptr<Image> loaded;
    guarded("loading an image", [&] {
        NSString* const file = toNS(path);
        if (![kindOfFile(file) isEqualToString:NSFileTypeRegular]) {
            return;
        }
        NSImage* const image = [[[NSImage alloc] initWithContentsOfFile:file] autorelease];
        if (image != nil && [image isValid]) {
            loaded = std::make_unique<AppKitImage>(image);
        }
    });
    return loaded;
}

std::unique_ptr<Document> AppKitApplication::loadDocument(const std::string& path) {
    std::unique_ptr<Document> loaded;
    guarded("loading a document", [&] {
        NSString* const file = toNS(path);
        NSString* const kind = kindOfFile(file);
        if (![kind isEqualToString:NSFileTypeRegular] && ![kind isEqualToString:NSFileTypeDirectory]) {
            return;
        }
        NSAttributedString* const text = agreementText(file);
        if (text != nil) {
            loaded = std::make_unique<AppKitDocument>(text);
        }
    });
    return loaded;
}

}  // namespace platform::macos
