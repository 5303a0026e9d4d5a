// The installer's window and the agreement's sheet, built in code.
#pragma once

#import <AppKit/AppKit.h>

#include <memory>

#import "platform/macos/appkit/Callback.h"
#import "platform/macos/appkit/InstallerViews.h"
#include "platform/ports/ApplicationMain.h"

namespace platform::macos {

class MainWindow {
public:
    MainWindow();
    ~MainWindow();
    MainWindow(const MainWindow&) = delete;
    MainWindow& operator=(const MainWindow&) = delete;

    const Outlets& outlets() const { return m_outlets; }

    // From here on the buttons tell the delegate, which must outlive the window. They do nothing before.
    void connectActions(ApplicationDelegate& delegate);

    // In the middle of the screen, no larger than it.
    void present();

private:
    struct Controls;

    void connect(NSButton* button, std::function<void()> action);

    NSWindow* m_window;
    NSWindow* m_agreement;
    WickfieldInstallerView* m_view;
    WickfieldAgreementView* m_agreementView;
    NSMutableArray* m_actions;  // the buttons' targets, which they do not own
    std::unique_ptr<Controls> m_controls;
    Outlets m_outlets;
};

}  // namespace platform::macos
