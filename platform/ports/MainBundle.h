// The application bundle that the process was started from: Name.app/Contents/{Info.plist, MacOS or Linux, Resources}.
// Read afresh at each call; any thread; nothing throws.
#pragma once

#include <optional>
#include <string>

#include "platform/ports/PropertyValue.h"

namespace platform {

class MainBundle {
public:
    virtual ~MainBundle() = default;

    // For an executable that lies in no bundle: the folder that holds it, for each of the two.
    virtual std::string bundlePath() = 0;
    virtual std::string resourcePath() = 0;
    virtual std::string executablePath() = 0;

    // The existing resource of that name and extension (none: the bare name), the user's languages' *.lproj folders
    // included; none when there is none. The name may have a folder part.
    virtual std::optional<std::string> pathForResource(const std::string& name, const std::string& type) = 0;

    // A value of Info.plist; none when the file or the key is missing.
    virtual std::optional<PropertyValue> infoValue(const std::string& key) = 0;
};

}  // namespace platform
