// Whether Caps Lock is on. None: this display does not tell.
#pragma once

#include <optional>

class QKeyEvent;

namespace platform::qt {

// Asks the X server. None under other displays.
std::optional<bool> capsLockState();

// As it was when the key was pressed or released; none for an event that no keyboard made, and for the Caps Lock key
// itself, whose events come before the change.
std::optional<bool> capsLockState(const QKeyEvent& event);

}  // namespace platform::qt
