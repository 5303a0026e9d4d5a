#pragma once

#include <functional>

class QWidget;

namespace platform::qt {

// Calls `painted` from the event loop, once: when the window has been painted for the first time, or half a second
// after it was shown, should it stay hidden behind others until then.
void afterFirstPaint(QWidget& window, std::function<void()> painted);

}  // namespace platform::qt
