// The Mac's services on GNUstep, as the host whose services the contracts are tested on.
#pragma once

#include <cerrno>
#include <string>

#include "platform/macos/services/MacConsole.h"
#include "platform/macos/services/MacIdentity.h"
#include "platform/macos/services/MacPropertyLists.h"
#include "platform/macos/services/MacSystemInfo.h"
#include "platform/macos/services/MacUncaughtExceptions.h"
#include "platform/macos/services/MacUserDefaults.h"
#include "platform/macos/services/files/MacFileManager.h"
#include "platform/ports/Host.h"

namespace host_under_test {

inline constexpr const char* name = "MacOnGNUstep";
inline constexpr const char* superusersHome = "/root";
inline constexpr const char* strangeName = ".hidden\n\u6b8b";  // as strange as a file's name may be

using Console = platform::macos::MacConsole;
using FileManager = platform::macos::MacFileManager;

inline const platform::Host& services() {
    static platform::macos::MacIdentity identity;
    static platform::macos::MacSystemInfo system;
    static platform::macos::MacPropertyLists propertyLists;
    static platform::macos::MacUncaughtExceptions exceptions;
    static const platform::Host host = [] {
        platform::Host made;
        made.identity = &identity;
        made.system = &system;
        made.propertyLists = &propertyLists;
        made.exceptions = &exceptions;
        return made;
    }();
    return host;
}

// Those of the test program; its home folder is to be a new one.
class UserDefaults {
public:
    platform::UserDefaults& get() { return m_defaults; }

private:
    platform::macos::MacUserDefaults m_defaults;
};

}  // namespace host_under_test
