#import "platform/macos/services/MacConsole.h"

#import "platform/macos/foundation/Guarded.h"
#import "platform/macos/foundation/Text.h"

namespace platform::macos {

void MacConsole::log(const std::string& line) {
    guarded("the console", [&line] { NSLog(@"%@", toNS(line)); });
}

}  // namespace platform::macos
