#import "platform/macos/services/MacUserDefaults.h"

#include <cerrno>

#import "platform/macos/foundation/Guarded.h"
#import "platform/macos/foundation/PropertyConversion.h"
#import "platform/macos/foundation/Text.h"

namespace platform::macos {

std::optional<PropertyValue> MacUserDefaults::value(const std::string& key) {
    std::optional<PropertyValue> found;
    guarded("the user's defaults",
            [&] { found = valueFromNS([[NSUserDefaults standardUserDefaults] objectForKey:toNS(key)]); });
    return found;
}

Failure MacUserDefaults::setValue(const std::string& key, const PropertyValue& value) {
    const bool set = guarded("the user's defaults",
                             [&] { [[NSUserDefaults standardUserDefaults] setObject:toNS(value) forKey:toNS(key)]; });
    return set ? Failure{} : Error{EINVAL, "The preference “" + key + "” could not be set"};
}

}  // namespace platform::macos
