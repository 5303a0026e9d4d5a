#include "platform/linux/services/LinuxUserDefaults.h"

#include <cerrno>
#include <utility>
#include <variant>

namespace platform::linux_host {

namespace {

// What the file holds: an empty dictionary when there is no file.
std::variant<PropertyDictionary, Error> load(const LinuxUserDefaults::Services& services, const std::string& path) {
    constexpr std::uint64_t limit = std::uint64_t{1} << 26U;
    if (!services.files.attributes(path)) {
        if (services.files.fileExists(path)) {
            return Error{EIO, "The preferences " + path + " could not be looked at"};
        }
        return PropertyDictionary{};
    }
    const auto bytes = services.files.readFile(path, limit);
    if (!bytes) {
        return Error{EIO, "The preferences " + path + " could not be read"};
    }
    auto parsed = services.propertyLists.parse(*bytes);
    if (const auto* error = std::get_if<Error>(&parsed)) {
        return Error{error->code, "The preferences " + path + " are damaged: " + error->description};
    }
    auto* dictionary = std::get_if<PropertyDictionary>(&std::get<PropertyValue>(parsed).value);
    if (dictionary == nullptr) {
        return Error{EINVAL, "The preferences " + path + " hold no dictionary"};
    }
    return std::move(*dictionary);
}

}  // namespace

std::string LinuxUserDefaults::path() const {
    const auto identifier = m_services.bundle.infoValue("CFBundleIdentifier");
    const auto* text = identifier ? identifier->as<std::string>() : nullptr;
    std::string name;
    if (text != nullptr && !text->empty() && text->find('/') == std::string::npos) {
        name = *text;
    } else {
        const std::string executable = m_services.bundle.executablePath();
        name = executable.substr(executable.rfind('/') + 1);
    }
    return m_services.identity.homeFolder() + "/Library/Preferences/" + name + ".plist";
}

std::optional<PropertyValue> LinuxUserDefaults::value(const std::string& key) {
    const std::lock_guard lock(m_mutex);
    const auto loaded = load(m_services, path());
    const auto* values = std::get_if<PropertyDictionary>(&loaded);
    if (values == nullptr) {
        return std::nullopt;
    }
    const auto found = values->find(key);
    return found == values->end() ? std::nullopt : std::optional(found->second);
}

Failure LinuxUserDefaults::setValue(const std::string& key, const PropertyValue& value) {
    const std::lock_guard lock(m_mutex);
    const std::string file = path();
    auto loaded = load(m_services, file);
    if (const auto* error = std::get_if<Error>(&loaded)) {
        return *error;
    }
    auto& values = std::get<PropertyDictionary>(loaded);
    values.insert_or_assign(key, value);
    if (auto failure = m_services.files.createDirectory(file.substr(0, file.rfind('/')), Intermediates::yes)) {
        return failure;
    }
    return m_services.files.writeAtomically(file, m_services.propertyLists.serialize({std::move(values)}));
}

}  // namespace platform::linux_host
