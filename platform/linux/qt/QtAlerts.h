// Alerts as sheets, or in windows of their own.
#pragma once

#include <QPointer>

#include "platform/ports/Alerts.h"

class QWidget;

namespace platform::qt {

class AlertView;
class AlertWindow;
class SheetOverlay;

class QtAlert : public Alert {
public:
    explicit QtAlert(AlertContents contents) : m_contents(std::move(contents)) {}
    ~QtAlert() override;
    QtAlert(const QtAlert&) = delete;
    QtAlert& operator=(const QtAlert&) = delete;

    // A parent that is not on the screen is shown. `didEnd` may destroy this object.
    void begin(Window* parent, std::function<void(long)> didEnd) override;
    bool isVisible() override;
    void orderOut() override;

private:
    void answer(long code);
    void takeAway();

    AlertContents m_contents;
    std::function<void(long)> m_didEnd;
    QPointer<AlertView> m_view;
    QPointer<SheetOverlay> m_sheet;
    QPointer<AlertWindow> m_window;
};

class QtAlerts : public Alerts {
public:
    std::unique_ptr<Alert> make(const AlertContents& contents) override { return std::make_unique<QtAlert>(contents); }
};

// Shows an alert that blocks every window of the application, serves events until it is answered, and returns.
void runModalAlert(const AlertContents& contents);

}  // namespace platform::qt
