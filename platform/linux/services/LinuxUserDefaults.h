// The user's preferences in ~/Library/Preferences/<bundle identifier>.plist, or <executable's name>.plist for a program
// without an identifier.
#pragma once

#include <mutex>

#include "platform/ports/FileManager.h"
#include "platform/ports/Identity.h"
#include "platform/ports/MainBundle.h"
#include "platform/ports/PropertyLists.h"
#include "platform/ports/UserDefaults.h"

namespace platform::linux_host {

class LinuxUserDefaults : public UserDefaults {
public:
    // Borrowed for the lifetime of this object.
    struct Services {
        FileManager& files;
        PropertyLists& propertyLists;
        MainBundle& bundle;
        Identity& identity;
    };
    explicit LinuxUserDefaults(const Services& services) : m_services(services) {}

    // Read from the file at each call.
    std::optional<PropertyValue> value(const std::string& key) override;

    // Keeps the other values and writes the file as a whole, in one step. A file that cannot be read, or is no
    // dictionary, stays as it is, and that is a failure. Two processes that set values at the same moment: the later
    // one's file remains.
    Failure setValue(const std::string& key, const PropertyValue& value) override;

private:
    std::string path() const;

    Services m_services;
    std::mutex m_mutex;
};

}  // namespace platform::linux_host
