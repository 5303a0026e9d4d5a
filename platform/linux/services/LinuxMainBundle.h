// The application bundle around the running executable.
#pragma once

#include "platform/ports/MainBundle.h"
#include "platform/ports/PropertyLists.h"

namespace platform::linux_host {

// A bundle is a folder "Name.app" that holds the executable in Contents/Linux or Contents/MacOS.
class LinuxMainBundle : public MainBundle {
public:
    explicit LinuxMainBundle(PropertyLists& propertyLists);
    LinuxMainBundle(PropertyLists& propertyLists, std::string executablePath);

    std::string bundlePath() override;
    std::string resourcePath() override;
    std::string executablePath() override;

    // Looked for in the resources themselves, then in the *.lproj folders of the user's languages in their order of
    // preference, of English and of "Base". What is found may be a file or a folder. With the type, the name's own
    // dots are part of the name. A name that leads out of the resources by ".." is looked up all the same: the bundle
    // is its maker's.
    std::optional<std::string> pathForResource(const std::string& name, const std::string& type) override;
    std::optional<PropertyValue> infoValue(const std::string& key) override;

private:
    bool isInBundle() const;

    PropertyLists& m_propertyLists;
    std::string m_executable;
};

}  // namespace platform::linux_host
