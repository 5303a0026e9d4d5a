// Alerts as sheets, or in windows of their own.
#pragma once

#import <AppKit/AppKit.h>

#import "platform/macos/appkit/Callback.h"
#include "platform/ports/Alerts.h"

namespace platform::macos {

class AppKitAlert : public Alert {
public:
    explicit AppKitAlert(const AlertContents& contents);
    ~AppKitAlert() override;
    AppKitAlert(const AppKitAlert&) = delete;
    AppKitAlert& operator=(const AppKitAlert&) = delete;

    // `didEnd` may destroy this object; the alert is off the screen by then.
    void begin(Window* parent, std::function<void(long)> didEnd) override;
    bool isVisible() override;
    void orderOut() override;

private:
    void addSuppression(const std::string& key);
    void giveEscape(const std::string& title);
    void answer(long code);
    void takeAway();

    NSAlert* m_alert = nil;
    WickfieldCallback* m_end = nil;  // there while the alert is up
    std::function<void(long)> m_didEnd;
};

class AppKitAlerts : public Alerts {
public:
    std::unique_ptr<Alert> make(const AlertContents& contents) override;
};

}  // namespace platform::macos
