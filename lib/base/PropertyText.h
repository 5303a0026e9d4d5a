// Property-list values as people see them, and as flags.
#pragma once

#include <optional>
#include <string>

#include "platform/ports/Date.h"
#include "platform/ports/PropertyValue.h"

namespace kz {

// A date as logs and settings show it: "2026-11-21 01:15:00 +0000", always UTC.
std::string description(platform::Date date);

// A string as it is, numbers in decimal (a real in the shortest form that reads back), booleans as 1 and 0, data,
// arrays and dictionaries in the old-style text form, keys sorted, nested by four blanks.
std::string description(const platform::PropertyValue& value);

// A bool or number: not zero. A string: after blanks, an optional sign and zeros, one of Y y T t 1-9. Others: false.
bool boolValue(const platform::PropertyValue& value);

// Reads the property list at the path and returns its root; none when the file is missing or larger than 256 MiB, when
// it is no property list, or when its root is no dictionary. Blocks while it reads.
std::optional<platform::PropertyDictionary> dictionaryWithContentsOfFile(const std::string& path);

}  // namespace kz
