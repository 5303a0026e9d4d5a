// The fonts of rich text, as this host has them.
#pragma once

#include <QStringList>
#include <map>

#include "platform/linux/qt/agreement/RtfModel.h"

namespace platform::qt {

// A font of this host that stands in for one that a text names.
struct RtfHostFont {
    QStringList families{};  // empty: the reader's own font
    bool fixed = false;
    bool serif = false;
    bool bold = false;  // weight and slant that the name itself carries ("Helvetica-BoldOblique")
    bool italic = false;
};

RtfHostFont hostFont(const RtfFont& font);

}  // namespace platform::qt
