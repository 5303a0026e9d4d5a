#import "platform/macos/services/MacMainBundle.h"

#include <utility>

#import "platform/macos/foundation/Guarded.h"
#import "platform/macos/foundation/PropertyConversion.h"
#import "platform/macos/foundation/Text.h"

namespace platform::macos {

namespace {

NSBundle* bundleAt(const std::string& path) {
    return path.empty() ? [NSBundle mainBundle] : [NSBundle bundleWithPath:toNS(path)];
}

}  // namespace

MacMainBundle::MacMainBundle(std::string path) : m_path(std::move(path)) {}

std::string MacMainBundle::bundlePath() {
    std::string path;
    guarded("the bundle", [&] { path = fromNS([bundleAt(m_path) bundlePath]); });
    return path;
}

std::string MacMainBundle::resourcePath() {
    std::string path;
    guarded("the bundle's resources", [&] { path = fromNS([bundleAt(m_path) resourcePath]); });
    return path;
}

std::string MacMainBundle::executablePath() {
    std::string path;
    guarded("the bundle's program", [&] { path = fromNS([bundleAt(m_path) executablePath]); });
    return path;
}

std::optional<std::string> MacMainBundle::pathForResource(const std::string& name, const std::string& type) {
    if (name.empty() && type.empty()) {
        return std::nullopt;
    }
    std::optional<std::string> path;
    guarded("a resource of the bundle", [&] {
        NSString* const found = [bundleAt(m_path) pathForResource:toNS(name) ofType:toNS(type)];
        if (found != nil) {
            path = fromNS(found);
        }
    });
    return path;
}

std::optional<PropertyValue> MacMainBundle::infoValue(const std::string& key) {
    std::optional<PropertyValue> value;
    guarded("the bundle's information",
            [&] { value = valueFromNS([[bundleAt(m_path) infoDictionary] objectForKey:toNS(key)]); });
    return value;
}

}  // namespace platform::macos
