// Instructions of fields in rich text.
#pragma once

#include <QString>

namespace platform::qt {

// The address of a field such as HYPERLINK "https://example.org", "#" and a name for a place in the text itself; empty
// for any other field and for an address of a kind that an agreement has no business with.
QString linkOfInstruction(const QString& instruction);

}  // namespace platform::qt
