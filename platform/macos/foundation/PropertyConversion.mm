#import "platform/macos/foundation/PropertyConversion.h"

#include <cstring>
#include <utility>

#import "platform/macos/foundation/Dates.h"
#import "platform/macos/foundation/Text.h"

namespace platform::macos {

namespace {

constexpr int mostLevels = 512;

std::optional<PropertyValue> convert(id object, int level);

struct ToNS {
    id operator()(const std::string& text) const { return toNS(text); }
    id operator()(std::int64_t number) const { return [NSNumber numberWithLongLong:number]; }
    id operator()(double number) const { return [NSNumber numberWithDouble:number]; }
    id operator()(bool yes) const { return [NSNumber numberWithBool:yes ? YES : NO]; }
    id operator()(const Date& date) const { return toNS(date); }
    id operator()(const PropertyData& data) const { return [NSData dataWithBytes:data.data() length:data.size()]; }
    id operator()(const PropertyArray& array) const {
        NSMutableArray* const objects = [NSMutableArray arrayWithCapacity:array.size()];
        for (const PropertyValue& value : array) {
            [objects addObject:toNS(value)];
        }
        return objects;
    }
    id operator()(const PropertyDictionary& dictionary) const {
        NSMutableDictionary* const objects = [NSMutableDictionary dictionaryWithCapacity:dictionary.size()];
        for (const auto& [key, value] : dictionary) {
            [objects setObject:toNS(value) forKey:toNS(key)];
        }
        return objects;
    }
};

// A truth value is one of two objects of its own; it cannot be told from a number by what it holds.
bool isTruthValue(NSNumber* number) {
    return number == [NSNumber numberWithBool:YES] || number == [NSNumber numberWithBool:NO];
}

std::optional<PropertyValue> fromNumber(NSNumber* number) {
    if (isTruthValue(number)) {
        return PropertyValue{static_cast<bool>([number boolValue])};
    }
    const char* const type = [number objCType];
    if (std::strcmp(type, @encode(double)) == 0 || std::strcmp(type, @encode(float)) == 0) {
        return PropertyValue{[number doubleValue]};
    }
    const std::int64_t whole{[number longLongValue]};
    // A list may hold more than 64 bits with a sign, of which longLongValue cuts off the upper ones.
    const bool fits = [number compare:[NSNumber numberWithLongLong:whole]] == NSOrderedSame;
    return fits ? std::optional(PropertyValue{whole}) : std::nullopt;
}

PropertyData fromData(NSData* data) {
    const auto* const bytes = static_cast<const std::uint8_t*>([data bytes]);
    return bytes == nullptr ? PropertyData{} : PropertyData(bytes, bytes + [data length]);
}

std::optional<PropertyValue> fromArray(NSArray* objects, int level) {
    PropertyArray array;
    array.reserve([objects count]);
    for (id object in objects) {
        auto value = convert(object, level + 1);
        if (!value) {
            return std::nullopt;
        }
        array.push_back(std::move(*value));
    }
    return PropertyValue{std::move(array)};
}

std::optional<PropertyValue> fromDictionary(NSDictionary* objects, int level) {
    PropertyDictionary dictionary;
    for (id key in objects) {
        auto value = convert([objects objectForKey:key], level + 1);
        if (!value || ![key isKindOfClass:[NSString class]]) {
            return std::nullopt;
        }
        dictionary.insert_or_assign(fromNS(static_cast<NSString*>(key)), std::move(*value));
    }
    return PropertyValue{std::move(dictionary)};
}

std::optional<PropertyValue> convert(id object, int level) {
    if (level > mostLevels) {
        return std::nullopt;
    }
    if ([object isKindOfClass:[NSString class]]) {
        return PropertyValue{fromNS(static_cast<NSString*>(object))};
    }
    if ([object isKindOfClass:[NSNumber class]]) {
        return fromNumber(object);
    }
    if ([object isKindOfClass:[NSDate class]]) {
        return PropertyValue{fromNS(static_cast<NSDate*>(object))};
    }
    if ([object isKindOfClass:[NSData class]]) {
        return PropertyValue{fromData(object)};
    }
    if ([object isKindOfClass:[NSArray class]]) {
        return fromArray(object, level);
    }
    if ([object isKindOfClass:[NSDictionary class]]) {
        return fromDictionary(object, level);
    }
    return std::nullopt;
}

}  // namespace

id toNS(const PropertyValue& value) { return std::visit(ToNS{}, value.value); }

std::optional<PropertyValue> valueFromNS(id object) { return convert(object, 0); }

}  // namespace platform::macos
