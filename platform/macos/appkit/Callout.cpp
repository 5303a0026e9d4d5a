#include "platform/macos/appkit/Callout.h"

namespace platform::macos {

void callOut(const std::function<void()>& work) noexcept {
    if (work) {
        work();
    }
}

void callOut(const std::function<void(long)>& work, long value) noexcept {
    if (work) {
        work(value);
    }
}

}  // namespace platform::macos
