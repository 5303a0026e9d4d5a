#include "tools/wickfield-bundle/check/NamedResource.h"

#include <algorithm>

#include "lib/base/PathText.h"
#include "tools/wickfield-bundle/check/NameFolding.h"
#include "tools/wickfield-bundle/check/ProjectKeys.h"
#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {

namespace {

bool leadsOut(const std::string& name) {
    const auto components = kz::pathComponents(name);
    return std::ranges::find(components, "..") != components.end();
}

// What only a file system that ignores case would find.
const InventoryEntry* withOtherCase(const CheckedBundle& bundle, const std::string& name) {
    const std::string wanted = foldedName(bundle.resourcesPrefix + name);
    const auto& entries = bundle.contents.entries;
    const auto found = std::ranges::find_if(entries, [&](const InventoryEntry& entry) {
        return entry.path.starts_with(bundle.resourcesPrefix) && !bundle.isInTree(entry.path) &&
               foldedName(entry.path) == wanted;
    });
    return found == entries.end() ? nullptr : &*found;
}

}  // namespace

std::string placeOf(const CheckedBundle& bundle, const std::string& path) {
    return path.starts_with(bundle.path + "/") ? path.substr(bundle.path.size() + 1) : path;
}

bool checkNamedResource(const CheckedBundle& bundle, const std::string& settingsPlace,
                        const platform::PropertyDictionary& values, const std::string& key,
                        const std::optional<std::string>& found, Findings& findings) {
    const auto value = values.find(key);
    const auto* name = value == values.end() ? nullptr : value->second.as<std::string>();
    if (name == nullptr || name->empty()) {
        return false;
    }
    if (leadsOut(*name)) {
        add(findings, "resource-outside", settingsPlace, key + " is \"" + *name + "\".",
            remedyInProject("resource-outside", key));
        return false;
    }
    if (found) {
        return true;
    }
    if (const InventoryEntry* other = withOtherCase(bundle, *name)) {
        add(findings, "resource-case", other->path, key + " calls it \"" + *name + "\".",
            remedyInProject("resource-case", key));
    } else {
        add(findings, "resource-missing", settingsPlace,
            key + " is \"" + *name + "\"; there is no such file in Contents/Resources.",
            remedyInProject("resource-missing", key));
    }
    return false;
}

}  // namespace wickfield_bundle
