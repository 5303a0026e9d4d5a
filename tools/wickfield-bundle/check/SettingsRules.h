// The settings, and what they name: agreement and background.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "app/InstallerSettings.h"
#include "platform/ports/PropertyValue.h"
#include "tools/wickfield-bundle/check/Check.h"
#include "tools/wickfield-bundle/check/MediaCheck.h"

namespace wickfield_bundle {

// Made while the bundle that is checked stands in for the program's own, and used up while it does. What takes time is
// begun when the object is made.
class SettingsCheck {
public:
    // By wickfield-media at that path, which may be missing.
    explicit SettingsCheck(const std::string& mediaHelper);

    // Waits for what was begun. At most once.
    void finish(const CheckedBundle& bundle, Findings& findings);

private:
    void read();

    std::optional<std::string> m_path;  // of the settings; none when there are none
    std::string m_whyUnreadable;
    std::optional<platform::PropertyDictionary> m_values;
    std::optional<std::string> m_agreement;  // paths of what they name; none when it is not there
    std::optional<std::string> m_background;
    std::unique_ptr<MediaCheck> m_agreementCheck;
    std::unique_ptr<MediaCheck> m_backgroundCheck;
};

}  // namespace wickfield_bundle
