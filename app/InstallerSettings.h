#pragma once

#include <optional>
#include <string>

#include "platform/ports/PropertyValue.h"

// The settings of the plug-in that this installer carries, read from its bundle. Plain data: no window is involved.
class InstallerSettings {
public:
    // Where the settings file lies; none when the bundle has none.
    static std::optional<std::string> locate();
    // Unreadable settings load as empty ones.
    static InstallerSettings load(const std::string& path);

    std::string pluginName() const;
    std::string pluginVersion() const;
    std::string pluginAuthor() const;
    std::string windowTitle() const;
    std::optional<std::string> backgroundImage() const;
    std::optional<std::string> agreement() const;
    bool removesBranding() const;

private:
    platform::PropertyDictionary m_values;
};
