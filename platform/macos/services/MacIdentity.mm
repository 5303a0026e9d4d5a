#import "platform/macos/services/MacIdentity.h"

#include <unistd.h>

#import "platform/macos/foundation/Guarded.h"
#import "platform/macos/foundation/Text.h"
#include "platform/macos/services/ConsoleUser.h"

namespace platform::macos {

unsigned MacIdentity::realUserID() { return ::getuid(); }

std::string MacIdentity::userName() {
    std::string name;
    guarded("the user's name", [&name] { name = fromNS(NSUserName()); });
    return name;
}

std::string MacIdentity::homeFolder() {
    std::string folder;
    guarded("the home folder", [&folder] { folder = fromNS(NSHomeDirectory()); });
    return folder;
}

std::optional<std::string> MacIdentity::homeFolderForUser(const std::string& name) {
    std::optional<std::string> folder;
    guarded("a user's home folder", [&] {
        NSString* const found = name.empty() ? nil : NSHomeDirectoryForUser(toNS(name));
        if ([found length] > 0) {
            folder = fromNS(found);
        }
    });
    return folder;
}

std::optional<std::string> MacIdentity::consoleUser() { return macos::consoleUser(); }

}  // namespace platform::macos
