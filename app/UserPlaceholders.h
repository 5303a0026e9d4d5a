// "/Users/user" in the mirror tree: the folders of whoever runs the installer.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace UserPlaceholders {

struct Placeholder {
    std::string_view prefix;
    std::optional<std::string> (*folder)();  // none when nobody is there whose folder could be meant
};

// In the order in which they are tried.
std::span<const Placeholder> all();

// The first that the path begins with, as plain text: "/Users/username/x" begins with "/Users/user" too. Null: none.
const Placeholder* placeholderOf(std::string_view path);

// Any thread. The path with its placeholder replaced, or as it stands when it has none; none when the placeholder's
// folder is none.
std::optional<std::string> replaced(const std::string& path);

}  // namespace UserPlaceholders
