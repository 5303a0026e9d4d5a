// The running application with its event loop. Main thread only, unless a line says otherwise.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/ports/Controls.h"

namespace platform {

class Application {
public:
    virtual ~Application() = default;

    // Asks the application to end: the will-terminate observers run, then the event loop returns. Harmless when
    // repeated.
    virtual void terminate() = 0;

    // Any thread. Observers run once, on the main thread, last registered first, before the process ends in an orderly
    // way, SIGTERM and closing the last window included.
    virtual void onWillTerminate(std::function<void()> observer) = 0;

    // Shows `sheet` on `parent` and blocks that window only; returns at once. `didEnd` runs when the sheet is ended.
    virtual void beginSheet(Window& sheet, Window& parent, std::function<void()> didEnd) = 0;
    virtual void endSheet(Window& sheet) = 0;

    // An application-modal alert with the host's default button; returns when the user has dismissed it.
    virtual void runAlertPanel(const std::string& title, const std::string& message) = 0;

    // None when the file cannot be read as an image.
    virtual std::unique_ptr<Image> loadImage(const std::string& path) = 0;

    // Rich text, rich text with attachments, HTML or plain text, by the file's kind; none when it cannot be read.
    virtual std::unique_ptr<Document> loadDocument(const std::string& path) = 0;
};

}  // namespace platform
