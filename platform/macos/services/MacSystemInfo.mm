#import "platform/macos/services/MacSystemInfo.h"

#import "platform/macos/foundation/Guarded.h"
#import "platform/macos/foundation/Text.h"

namespace platform::macos {

std::optional<std::string> MacSystemInfo::environmentVariable(const std::string& name) {
    std::optional<std::string> found;
    guarded("the environment", [&] {
        NSString* const value = [[[NSProcessInfo processInfo] environment] objectForKey:toNS(name)];
        if (value != nil) {
            found = fromNS(value);
        }
    });
    return found;
}

std::string MacSystemInfo::globallyUniqueString() {
    std::string text;
    guarded("a unique text", [&text] { text = fromNS([[NSProcessInfo processInfo] globallyUniqueString]); });
    return text;
}

std::string MacSystemInfo::operatingSystemVersion() {
    std::string text;
    guarded("the system's version",
            [&text] { text = fromNS([[NSProcessInfo processInfo] operatingSystemVersionString]); });
    return text;
}

long MacSystemInfo::processorCount() {
    long count = 1;
    guarded("the processors",
            [&count] { count = static_cast<long>([[NSProcessInfo processInfo] activeProcessorCount]); });
    return count;
}

std::uint64_t MacSystemInfo::physicalMemory() {
    std::uint64_t bytes = 0;
    guarded("the memory", [&bytes] { bytes = [[NSProcessInfo processInfo] physicalMemory]; });
    return bytes;
}

}  // namespace platform::macos
