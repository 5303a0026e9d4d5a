#import "platform/macos/services/MacStandardFolders.h"

#include <unistd.h>

#import "platform/macos/foundation/Guarded.h"
#import "platform/macos/foundation/Text.h"

namespace platform::macos {

std::vector<std::string> MacStandardFolders::searchPaths(FolderKind kind, FolderDomain domain) {
    std::vector<std::string> paths;
    guarded("the standard folders", [&] {
        NSArray* const found = NSSearchPathForDirectoriesInDomains(static_cast<NSSearchPathDirectory>(kind),
                                                                   static_cast<NSSearchPathDomainMask>(domain), YES);
        for (NSString* path in found) {
            paths.push_back(fromNS(path));
        }
    });
    return paths;
}

std::string MacStandardFolders::temporaryFolder() {
    std::string folder;
    guarded("the temporary folder", [&folder] { folder = fromNS(NSTemporaryDirectory()); });
    return folder;
}

std::optional<std::string> MacStandardFolders::userCacheFolder() {
    const std::size_t size = ::confstr(_CS_DARWIN_USER_CACHE_DIR, nullptr, 0);
    if (size <= 1) {
        return std::nullopt;
    }
    std::string bytes(size, '\0');
    if (::confstr(_CS_DARWIN_USER_CACHE_DIR, bytes.data(), bytes.size()) != size) {
        return std::nullopt;
    }
    std::optional<std::string> folder;
    guarded("the cache folder", [&] {
        NSFileManager* const files = [[[NSFileManager alloc] init] autorelease];
        NSString* const path = [files stringWithFileSystemRepresentation:bytes.data() length:size - 1];
        if ([path length] > 0) {
            folder = fromNS(path);
        }
    });
    return folder;
}

}  // namespace platform::macos
