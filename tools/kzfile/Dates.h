// Dates as users read and type them, in the time zone of the environment.
#pragma once

#include <optional>
#include <string>

#include "platform/ports/Date.h"

namespace kzfile {

std::string dateText(platform::Date date);  // "2026-11-21 01:15:00 +0100"

// "now", "2026-11-21", "2026-11-21 01:15" or "2026-11-21T01:15:00", these with "Z" or an offset such as "+01:00" behind
// them too; and "@SECONDS" since 1970. None for anything else, days and hours that do not exist among them.
std::optional<platform::Date> dateFromText(const std::string& text);

}  // namespace kzfile
