#import "platform/macos/services/MacPropertyLists.h"

#include <cerrno>

#import "platform/macos/foundation/Guarded.h"
#import "platform/macos/foundation/PropertyConversion.h"
#import "platform/macos/foundation/Text.h"

namespace platform::macos {

namespace {

Error parseError(NSError* error) {
    const auto code = static_cast<int>([error code]);
    const std::string text = fromNS([error localizedDescription]);
    return {code != 0 ? code : EINVAL, text.empty() ? "This is no property list" : text};
}

}  // namespace

std::variant<PropertyValue, Error> MacPropertyLists::parse(std::string_view bytes) {
    std::variant<PropertyValue, Error> result = Error{EINVAL, "This is no property list"};
    if (bytes.empty()) {
        return result;
    }
    guarded("reading a property list", [&] {
        NSData* const data = [NSData dataWithBytes:bytes.data() length:bytes.size()];
        NSError* error = nil;
        id const list = [NSPropertyListSerialization propertyListWithData:data
                                                                  options:NSPropertyListImmutable
                                                                   format:nullptr
                                                                    error:&error];
        if (list == nil) {
            result = parseError(error);
        } else if (auto value = valueFromNS(list)) {
            result = std::move(*value);
        }
    });
    return result;
}

std::string MacPropertyLists::serialize(const PropertyValue& value) {
    std::string bytes;
    guarded("writing a property list", [&] {
        NSData* const data = [NSPropertyListSerialization dataWithPropertyList:toNS(value)
                                                                        format:NSPropertyListXMLFormat_v1_0
                                                                       options:0
                                                                         error:nullptr];
        if (data != nil) {
            bytes.assign(static_cast<const char*>([data bytes]), [data length]);
        }
    });
    return bytes;
}

}  // namespace platform::macos
