// The application with AppKit's event loop.
#pragma once

#import <AppKit/AppKit.h>

#include <functional>
#include <map>
#include <mutex>
#include <vector>

#import "platform/macos/appkit/Callback.h"
#include "platform/ports/Application.h"

namespace platform::macos {

class AppKitApplication : public Application {
public:
    // Does not return: the process ends, after its will-terminate observers.
    void terminate() override;
    void onWillTerminate(std::function<void()> observer) override;
    // A sheet that cannot be shown ends the application: its parent is not to be used without it.
    void beginSheet(Window& sheet, Window& parent, std::function<void()> didEnd) override;
    void endSheet(Window& sheet) override;
    void runAlertPanel(const std::string& title, const std::string& message) override;
    std::unique_ptr<Image> loadImage(const std::string& path) override;
    std::unique_ptr<Document> loadDocument(const std::string& path) override;

    // Runs the observers, when the application is about to terminate; nothing when it has been done.
    void finish();

private:
    void sheetEnded(NSWindow* sheet, const std::function<void()>& didEnd);

    bool m_finished = false;
    std::mutex m_mutex;
    std::vector<std::function<void()>> m_observers;    // guarded by m_mutex
    std::map<NSWindow*, WickfieldCallback*> m_sheets;  // those that are up
};

}  // namespace platform::macos
