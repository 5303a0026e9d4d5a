#include "lib/base/PathText.h"

#include <algorithm>

#include "lib/base/Text.h"

namespace kz {

namespace {

constexpr std::string_view slash = "/";

// Runs of slashes collapsed, trailing ones dropped, "/" itself kept.
std::string standardised(std::string path) {
    if (path.find("//") != std::string::npos) {
        const auto isSecondSlash = [](char byte, char next) { return byte == '/' && next == '/'; };
        path.erase(std::unique(path.begin(), path.end(), isSecondSlash), path.end());
    }
    if (path.size() > 1 && path.ends_with('/')) {
        path.pop_back();
    }
    return path;
}

std::string_view withoutTrailingSlashes(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/')) {
        path.remove_suffix(1);
    }
    return path;
}

std::string_view lastComponent(std::string_view path) {
    path = withoutTrailingSlashes(path);
    const std::size_t separator = path.rfind('/');
    return separator == std::string_view::npos || path == slash ? path : path.substr(separator + 1);
}

bool turnsDirection(std::uint32_t character) {
    return character == 0x061C || character == 0x200E || character == 0x200F ||
           (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
}

bool isExtension(std::string_view text) {
    if (text.empty() || text.ends_with('.')) {
        return false;
    }
    while (!text.empty()) {
        const DecodedCharacter character = decodeCharacter(text);
        if (character.codePoint == ' ' || character.codePoint == '/' ||
            (character.valid && turnsDirection(character.codePoint))) {
            return false;
        }
        text.remove_prefix(character.bytes);
    }
    return true;
}

std::string_view extensionOf(std::string_view path) {
    const std::string_view name = lastComponent(path);
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || name.starts_with("..")) {
        return {};
    }
    const std::string_view extension = name.substr(dot + 1);
    return isExtension(extension) ? extension : std::string_view{};
}

}  // namespace

std::string appendPathComponent(std::string_view path, std::string_view component) {
    std::string joined;
    joined.reserve(path.size() + 1 + component.size());
    joined.append(path);
    if (!path.empty() && !component.empty()) {
        joined += '/';
    }
    return standardised(std::move(joined.append(component)));
}

std::string lastPathComponent(std::string_view path) { return std::string(lastComponent(path)); }

std::string deletingLastPathComponent(std::string_view path) {
    std::string result = standardised(std::string(path));
    const std::size_t separator = result.rfind('/');
    if (separator == std::string::npos) {
        return {};
    }
    result.resize(std::max<std::size_t>(separator, 1));
    return result;
}

std::string pathExtension(std::string_view path) { return std::string(extensionOf(path)); }

std::string deletingPathExtension(std::string_view path) {
    std::string result = standardised(std::string(path));
    const std::size_t extension = extensionOf(result).size();
    result.resize(result.size() - (extension == 0 ? 0 : extension + 1));
    return result;
}

std::string appendPathExtension(std::string_view path, std::string_view extension) {
    std::string result = standardised(std::string(path));
    if (result.empty() || result == slash || !isExtension(extension)) {
        return std::string(path);
    }
    return result.append(1, '.').append(extension);
}

std::vector<std::string> pathComponents(std::string_view path) {
    std::vector<std::string> components;
    if (path.starts_with('/')) {
        components.emplace_back(slash);
    }
    std::size_t from = 0;
    while (from < path.size()) {
        const std::size_t end = std::min(path.find('/', from), path.size());
        if (end > from) {
            components.emplace_back(path.substr(from, end - from));
        }
        from = end + 1;
    }
    if (path.ends_with('/') && components.size() > (path.starts_with('/') ? 1U : 0U)) {
        components.emplace_back(slash);
    }
    return components;
}

}  // namespace kz
