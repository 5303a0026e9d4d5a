#include "platform/linux/qt/CapsLock.h"

#include <dlfcn.h>

#include <QGuiApplication>
#include <QKeyEvent>

namespace platform::qt {

namespace {

// Of the X protocol and of its keyboard extension; Wayland's keymaps number the modifiers in the same way.
constexpr unsigned lockModifier = 1U << 1;
constexpr unsigned coreKeyboard = 0x0100;
constexpr unsigned capsLockIndicator = 1U << 0;

// From the library that Qt has loaded for an X display; null without one. Linking it would bind the program to X.
using GetIndicatorState = int (*)(Display* display, unsigned keyboard, unsigned* state);

GetIndicatorState indicatorStateCall() {
    static const auto call = [] {
        void* const library = ::dlopen("libX11.so.6", RTLD_LAZY | RTLD_NOLOAD);
        void* const found = library != nullptr ? ::dlsym(library, "XkbGetIndicatorState") : nullptr;
        return reinterpret_cast<GetIndicatorState>(found);
    }();
    return call;
}

}  // namespace

std::optional<bool> capsLockState() {
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    Display* const display = x11 != nullptr ? x11->display() : nullptr;  // another platform may have none behind it
    const auto indicatorState = display != nullptr ? indicatorStateCall() : nullptr;
    unsigned state = 0;
    if (indicatorState == nullptr || indicatorState(display, coreKeyboard, &state) != 0) {
        return std::nullopt;
    }
    return (state & capsLockIndicator) != 0;
}

std::optional<bool> capsLockState(const QKeyEvent& event) {
    if (event.nativeScanCode() == 0 || event.key() == Qt::Key_CapsLock) {
        return std::nullopt;
    }
    return (event.nativeModifiers() & lockModifier) != 0;
}

}  // namespace platform::qt
