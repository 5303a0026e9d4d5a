#include "platform/linux/services/LinuxMainBundle.h"

#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "platform/linux/services/Languages.h"

namespace platform::linux_host {

namespace {

std::string ownExecutable() {
    std::error_code error;
    auto path = std::filesystem::read_symlink("/proc/self/exe", error).string();
    constexpr std::string_view removed = " (deleted)";  // how the kernel marks an executable that was replaced
    if (path.ends_with(removed) && !std::filesystem::exists(path, error)) {
        path.resize(path.size() - removed.size());
    }
    return path;
}

std::string parent(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

bool exists(const std::string& path) {
    std::error_code error;
    return path.find('\0') == std::string::npos && std::filesystem::exists(path, error);
}

std::optional<std::string> readWhole(const std::string& path) {
    constexpr std::streamsize limit = std::streamsize{1} << 24;
    std::ifstream file(path, std::ios::binary);
    std::string text;
    std::string part(std::size_t{1} << 16U, '\0');
    while (file && std::ssize(text) <= limit) {
        file.read(part.data(), std::ssize(part));
        text.append(part, 0, static_cast<std::size_t>(file.gcount()));
    }
    return file.eof() ? std::optional(std::move(text)) : std::nullopt;
}

}  // namespace

LinuxMainBundle::LinuxMainBundle(PropertyLists& propertyLists) : LinuxMainBundle(propertyLists, ownExecutable()) {}

LinuxMainBundle::LinuxMainBundle(PropertyLists& propertyLists, std::string executablePath)
    : m_propertyLists(propertyLists), m_executable(std::move(executablePath)) {}

bool LinuxMainBundle::isInBundle() const {
    const std::string folder = parent(m_executable);
    return (folder.ends_with("/Contents/Linux") || folder.ends_with("/Contents/MacOS")) &&
           parent(parent(folder)).ends_with(".app");
}

std::string LinuxMainBundle::bundlePath() {
    const std::string folder = parent(m_executable);
    return isInBundle() ? parent(parent(folder)) : folder;
}

std::string LinuxMainBundle::resourcePath() {
    return isInBundle() ? bundlePath() + "/Contents/Resources" : bundlePath();
}

std::string LinuxMainBundle::executablePath() { return m_executable; }

std::optional<std::string> LinuxMainBundle::pathForResource(const std::string& name, const std::string& type) {
    if (name.empty() && type.empty()) {
        return std::nullopt;
    }
    const std::string file = type.empty() ? name : name + "." + type;
    const std::string resources = resourcePath();
    if (const std::string path = resources + "/" + file; exists(path)) {
        return path;
    }
    for (const auto& language : preferredLocalizations()) {
        std::string path = resources;
        path.append("/").append(language).append(".lproj/").append(file);
        if (exists(path)) {
            return path;
        }
    }
    return std::nullopt;
}

std::optional<PropertyValue> LinuxMainBundle::infoValue(const std::string& key) {
    const auto bytes = readWhole(isInBundle() ? bundlePath() + "/Contents/Info.plist" : bundlePath() + "/Info.plist");
    if (!bytes) {
        return std::nullopt;
    }
    const auto parsed = m_propertyLists.parse(*bytes);
    const auto* root = std::get_if<PropertyValue>(&parsed);
    const auto* dictionary = root == nullptr ? nullptr : root->as<PropertyDictionary>();
    if (dictionary == nullptr) {
        return std::nullopt;
    }
    const auto found = dictionary->find(key);
    return found == dictionary->end() ? std::nullopt : std::optional(found->second);
}

}  // namespace platform::linux_host
