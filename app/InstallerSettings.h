// The settings of the plug-in that this installer carries, read from its bundle. Plain data: no window is involved.
#pragma once

#include <optional>
#include <string>

#include "platform/ports/PropertyValue.h"

class InstallerSettings {
public:
    // The settings file among the bundle's resources, and its keys.
    static constexpr const char* fileName = "InstallerSettings";
    static constexpr const char* fileType = "plist";
    static constexpr const char* nameKey = "KZPluginName";
    static constexpr const char* versionKey = "KZPluginVersion";
    static constexpr const char* authorKey = "KZPluginAuthor";
    static constexpr const char* backgroundKey = "KZBgImagePath";
    static constexpr const char* agreementKey = "KZEULAPath";
    static constexpr const char* removesBrandingKey = "removeBranding";

    // Where the settings file lies; none when the bundle has none, which means that the installer is damaged.
    static std::optional<std::string> locate();

    // Reads the file; blocks. A file that is no readable dictionary gives settings without any key.
    static InstallerSettings load(const std::string& path);

    InstallerSettings() = default;
    explicit InstallerSettings(platform::PropertyDictionary values);

    // As the window shows them: a value of any kind by its description, an absent one as "(null)".
    std::string pluginName() const;
    std::string pluginVersion() const;
    std::string author() const;       // "by ..."
    std::string windowTitle() const;  // "... Installer"

    // Existing files among the bundle's resources; none when the key is absent, is no string or names no such file.
    std::optional<std::string> backgroundImage() const;
    std::optional<std::string> agreement() const;

    bool removesBranding() const;

private:
    std::optional<platform::PropertyValue> value(const std::string& key) const;
    std::optional<std::string> resource(const std::string& key) const;

    platform::PropertyDictionary m_values;
};
