// Alerts of the host. Main thread only.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/ports/Controls.h"

namespace platform {

// Absent button titles leave the host's defaults. Texts are shown as they are.
struct AlertContents {
    std::string messageText;
    std::string informativeText;
    std::optional<std::string> defaultButton;
    std::optional<std::string> alternateButton;
    std::optional<std::string> otherButton;
    std::optional<std::string> suppressionKey;  // the user default that a "don't show again" box is bound to
};

class Alert {
public:
    virtual ~Alert() = default;  // takes it off the screen

    // On a window as a sheet, or free-standing when there is none. Returns at once; `didEnd` gets 1 for the default
    // button, 0 for the alternate and -1 for the other one.
    virtual void begin(Window* parent, std::function<void(long)> didEnd) = 0;
    virtual bool isVisible() = 0;
    virtual void orderOut() = 0;  // without an answer
};

class Alerts {
public:
    virtual ~Alerts() = default;
    virtual std::unique_ptr<Alert> make(const AlertContents& contents) = 0;
};

}  // namespace platform
