// Qt's literals for strings, where the rest of this room's code can see them.
#pragma once

#include <QString>

namespace platform::qt {

using Qt::Literals::StringLiterals::operator""_L1;
using Qt::Literals::StringLiterals::operator""_s;

}  // namespace platform::qt
