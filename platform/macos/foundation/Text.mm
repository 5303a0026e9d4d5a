#import "platform/macos/foundation/Text.h"

#include "platform/macos/foundation/Utf8.h"

namespace platform::macos {

namespace {

NSString* decoded(const std::string& text) {
    return [[[NSString alloc] initWithBytes:text.data() length:text.size() encoding:NSUTF8StringEncoding] autorelease];
}

}  // namespace

NSString* toNS(const std::string& text) {
    if (text.empty()) {
        return @"";
    }
    NSString* const whole = decoded(text);
    if (whole != nil) {
        return whole;
    }
    NSString* const repaired = decoded(repairedUtf8(text));
    return repaired != nil ? repaired : @"";
}

std::string fromNS(NSString* text) {
    NSData* const bytes = [text dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
    if ([bytes length] == 0) {
        return {};
    }
    return {static_cast<const char*>([bytes bytes]), [bytes length]};
}

}  // namespace platform::macos
