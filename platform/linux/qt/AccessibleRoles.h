#pragma once

namespace platform::qt {

// Has assistive technology see the windows, sheets and the picture of this room for what they are, from here on.
// Harmless when repeated.
void installAccessibleRoles();

}  // namespace platform::qt
