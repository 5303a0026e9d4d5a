#include "tools/wickfield-bundle/check/ProjectKeys.h"

#include <algorithm>
#include <array>

#include "app/InstallerSettings.h"

namespace wickfield_bundle {

namespace {

struct ProjectKey {
    std::string_view setting;
    const char* project;
};

constexpr std::array<ProjectKey, 6> keys{{
    {InstallerSettings::nameKey, "\"name\" in wickfield.json, or --name"},
    {InstallerSettings::versionKey, "\"version\" in wickfield.json, or --version"},
    {InstallerSettings::authorKey, "\"author\" in wickfield.json, or --author"},
    {InstallerSettings::backgroundKey, "\"background\" in wickfield.json, or --background"},
    {InstallerSettings::agreementKey, "\"agreement\" in wickfield.json, or --agreement"},
    {InstallerSettings::removesBrandingKey, "\"branding\" in wickfield.json, or --no-branding"},
}};

}  // namespace

std::string inProject(std::string_view settingsKey) {
    const auto* const found = std::ranges::find(keys, settingsKey, &ProjectKey::setting);
    return found == keys.end() ? "" : found->project;
}

std::string remedyInProject(RuleName rule, std::string_view settingsKey) {
    std::string remedy(rule.rule().remedy);
    const std::string where = inProject(settingsKey);
    if (where.empty()) {
        return remedy;
    }
    if (remedy.ends_with('.')) {
        remedy.pop_back();
    }
    return remedy + ": " + where + ".";
}

}  // namespace wickfield_bundle
