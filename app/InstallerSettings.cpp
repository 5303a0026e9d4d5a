#include "app/InstallerSettings.h"

#include <utility>

#include "lib/base/Format.h"
#include "lib/base/PathText.h"
#include "lib/base/PropertyText.h"
#include "platform/ports/Host.h"

namespace {

std::optional<std::string> existingResource(const std::string& name, const std::string& type) {
    auto path = platform::host().bundle->pathForResource(name, type);
    if (!path || !platform::host().files->fileExists(*path)) {
        return std::nullopt;
    }
    return path;
}

}  // namespace

std::optional<std::string> InstallerSettings::locate() { return existingResource(fileName, fileType); }

InstallerSettings InstallerSettings::load(const std::string& path) {
    return InstallerSettings(kz::dictionaryWithContentsOfFile(path).value_or(platform::PropertyDictionary{}));
}

InstallerSettings::InstallerSettings(platform::PropertyDictionary values) : m_values(std::move(values)) {}

std::string InstallerSettings::pluginName() const { return kz::format("%@", value(nameKey)); }

std::string InstallerSettings::pluginVersion() const { return kz::format("%@", value(versionKey)); }

std::string InstallerSettings::author() const { return kz::format("by %@", value(authorKey)); }

std::string InstallerSettings::windowTitle() const { return kz::format("%@ Installer", value(nameKey)); }

std::optional<std::string> InstallerSettings::backgroundImage() const { return resource(backgroundKey); }

std::optional<std::string> InstallerSettings::agreement() const { return resource(agreementKey); }

bool InstallerSettings::removesBranding() const {
    const auto removes = value(removesBrandingKey);
    return removes && kz::boolValue(*removes);
}

std::optional<platform::PropertyValue> InstallerSettings::value(const std::string& key) const {
    const auto found = m_values.find(key);
    return found == m_values.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::string> InstallerSettings::resource(const std::string& key) const {
    const auto found = m_values.find(key);
    const auto* name = found == m_values.end() ? nullptr : found->second.as<std::string>();
    if (name == nullptr || name->empty()) {
        return std::nullopt;
    }
    return existingResource(kz::deletingPathExtension(*name), kz::pathExtension(*name));
}
