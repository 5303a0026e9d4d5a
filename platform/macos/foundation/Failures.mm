#import "platform/macos/foundation/Failures.h"

#include <cerrno>

#import "platform/macos/foundation/Text.h"
#include "platform/posix/FileErrors.h"

namespace platform::macos {

namespace {

int codeFromCocoa(NSInteger code) {
    switch (code) {
        case NSFileNoSuchFileError:
        case NSFileReadNoSuchFileError:
            return ENOENT;
        case NSFileReadNoPermissionError:
        case NSFileWriteNoPermissionError:
            return EACCES;
        case NSFileWriteFileExistsError:
            return EEXIST;
        case NSFileWriteOutOfSpaceError:
            return ENOSPC;
        case NSFileWriteVolumeReadOnlyError:
            return EROFS;
        case NSFileReadInvalidFileNameError:
        case NSFileWriteInvalidFileNameError:
            return EINVAL;
        default:
            return EIO;
    }
}

}  // namespace

int codeFromNS(NSError* error) {
    constexpr int mostErrors = 8;  // one within the other
    NSError* const outermost = error;
    for (int depth = 0; error != nil && depth < mostErrors; ++depth) {
        if ([[error domain] isEqualToString:NSPOSIXErrorDomain] && [error code] > 0) {
            return static_cast<int>([error code]);
        }
        error = [[error userInfo] objectForKey:NSUnderlyingErrorKey];
    }
    return [[outermost domain] isEqualToString:NSCocoaErrorDomain] ? codeFromCocoa([outermost code]) : EIO;
}

Error errorFromNS(NSError* error, const std::string& path) {
    const int code = codeFromNS(error);
    std::string text = fromNS([error localizedDescription]);
    while (text.ends_with('.') || text.ends_with(' ')) {
        text.pop_back();
    }
    if (text.empty()) {
        return posix::fileError("use", path, code);
    }
    if (text.find(path) == std::string::npos) {
        text += " (" + path + ")";
    }
    return {code, std::move(text)};
}

}  // namespace platform::macos
