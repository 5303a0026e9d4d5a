#include "app/UserPlaceholders.h"

#include <algorithm>
#include <array>

#include "lib/KZLocalPaths.h"
#include "lib/base/PathText.h"

namespace UserPlaceholders {

namespace {

constexpr std::array<Placeholder, 4> placeholders{{
    {"/Users/user/Library/Preferences", [] { return KZLocalPaths::prefsDirectory(UserDomain::yes); }},
    {"/Users/user/Library/Application Support", [] { return KZLocalPaths::appSupportDirectory(UserDomain::yes); }},
    {"/Users/user/Documents", [] { return KZLocalPaths::documentDirectory(UserDomain::yes); }},
    {"/Users/user", [] { return KZLocalPaths::userDirectory(); }},
}};

}  // namespace

std::span<const Placeholder> all() { return placeholders; }

const Placeholder* placeholderOf(std::string_view path) {
    const auto* const found = std::ranges::find_if(
        placeholders, [&](const Placeholder& placeholder) { return path.starts_with(placeholder.prefix); });
    return found == placeholders.end() ? nullptr : found;
}

std::optional<std::string> replaced(const std::string& path) {
    const auto* const placeholder = placeholderOf(path);
    if (placeholder == nullptr) {
        return path;
    }
    const auto folder = placeholder->folder();
    return folder ? std::optional(kz::appendPathComponent(*folder, path.substr(placeholder->prefix.size())))
                  : std::nullopt;
}

}  // namespace UserPlaceholders
