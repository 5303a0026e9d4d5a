// A file among the bundle's resources that the settings name.
#pragma once

#include <optional>
#include <string>

#include "platform/ports/PropertyValue.h"
#include "tools/wickfield-bundle/check/Check.h"

namespace wickfield_bundle {

// From the bundle's own folder; the path as it is when it lies elsewhere.
std::string placeOf(const CheckedBundle& bundle, const std::string& path);

// Says what is wrong with where the file is looked for. `found` is what the installer's own look-up gives. True when
// there is a file whose contents are to be looked at.
bool checkNamedResource(const CheckedBundle& bundle, const std::string& settingsPlace,
                        const platform::PropertyDictionary& values, const std::string& key,
                        const std::optional<std::string>& found, Findings& findings);

}  // namespace wickfield_bundle
