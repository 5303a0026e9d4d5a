// The hand-over from the process entry to the host's application.
#pragma once

#include <memory>

#include "platform/ports/Controls.h"

namespace platform {

// What the main window's layout file names; all of it is there before the delegate is made.
struct Outlets {
    Window* window = nullptr;
    TextField* textPluginName = nullptr;
    TextField* textPluginAuthor = nullptr;
    TextField* textPluginVersion = nullptr;
    ProgressIndicator* spinner = nullptr;
    Button* btnInstall = nullptr;
    TextField* tallowmereLinkText = nullptr;
    ImageView* bgImageView = nullptr;
    Button* btnGantry = nullptr;
    Window* windowEULA = nullptr;
    TextView* eulaText = nullptr;
};

// Receives the application's events and the window's actions, all on the main thread.
class ApplicationDelegate {
public:
    virtual ~ApplicationDelegate() = default;

    virtual void awakeFromNib() = 0;
    virtual void applicationDidFinishLaunching() = 0;
    virtual bool applicationShouldTerminateAfterLastWindowClosed() = 0;

    virtual void install() = 0;
    virtual void sendToGantry() = 0;
    virtual void eulaAgree() = 0;
    virtual void eulaDisagree() = 0;
};

using MakeDelegate = std::unique_ptr<ApplicationDelegate> (*)(const Outlets&);

// Loads the main window, makes the delegate, runs the event loop until the application terminates; the process's exit
// code. Provided by the adapter that the program links.
int applicationMain(int argc, char** argv, MakeDelegate makeDelegate);

}  // namespace platform
