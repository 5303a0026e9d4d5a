#include "platform/macos/services/workspace/Registration.h"

#include <CoreServices/CoreServices.h>

namespace platform::macos {

int registerWithLaunchServices(const std::string& bundlePath) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): bytes under another name
    const auto* const bytes = reinterpret_cast<const UInt8*>(bundlePath.data());
    CFURLRef const url = CFURLCreateFromFileSystemRepresentation(kCFAllocatorDefault, bytes,
                                                                 static_cast<CFIndex>(bundlePath.size()), true);
    if (url == nullptr) {
        return fnfErr;
    }
    const OSStatus status = LSRegisterURL(url, true);
    CFRelease(url);
    return status;
}

}  // namespace platform::macos
