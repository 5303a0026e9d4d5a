// The settings, and what they name: agreement and background.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/InstallerSettings.h"
#include "platform/ports/PropertyValue.h"
#include "tools/wickfield-bundle/check/Check.h"
#include "tools/wickfield-bundle/check/LocalizedFile.h"
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
    // A file that the settings name, with a reading of each of its languages' ones, some at a time.
    struct NamedFile {
        const char* key;
        Media media;
        LocalizedFile file = {};
        std::vector<std::unique_ptr<MediaCheck>> readings = {};  // by the paths of the file; null once used up
    };

    void read();
    void begin(NamedFile& named, std::size_t upTo);
    void finish(NamedFile& named, const CheckedBundle& bundle, Findings& findings);

    const std::string m_mediaHelper;
    std::optional<std::string> m_path;  // of the settings; none when there are none
    std::string m_whyUnreadable;
    std::optional<platform::PropertyDictionary> m_values;
    NamedFile m_agreement{.key = InstallerSettings::agreementKey, .media = Media::agreement};
    NamedFile m_background{.key = InstallerSettings::backgroundKey, .media = Media::image};
};

}  // namespace wickfield_bundle
