#pragma once

#include <QString>

namespace platform::qt {

// Opens a web or mail address by the host's workspace. Any other kind of address is left alone: a document must not
// start programs or open files.
void openLink(const QString& address);

}  // namespace platform::qt
