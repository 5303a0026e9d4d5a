// The host whose services the contracts are tested on.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cerrno>
#include <string>

#include "platform/macos/services/MacConsole.h"
#include "platform/macos/services/MacHost.h"
#include "platform/macos/services/MacMainBundle.h"
#include "platform/macos/services/files/MacFileManager.h"

namespace host_under_test {

inline constexpr const char* name = "Mac";
inline constexpr const char* programFolder = "MacOS";  // within Contents
inline constexpr const char* superusersHome = "/var/root";
inline constexpr const char* strangeName = ".hidden\n\u6b8b";  // as strange as a file's name may be
inline constexpr int missingAttribute = ENOATTR;

using Console = platform::macos::MacConsole;
using FileManager = platform::macos::MacFileManager;

inline const platform::Host& services() { return platform::macos::services(); }

// The bundle that lies there, with a program of that name.
class MainBundle : public platform::macos::MacMainBundle {
public:
    MainBundle(const std::string& path, const std::string& /*program*/) : MacMainBundle(path) {}
};

// Those of the test program, with nothing in them at first, and nothing left behind.
class UserDefaults {
public:
    UserDefaults() { clear(); }
    ~UserDefaults() { clear(); }
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;

    platform::UserDefaults& get() { return *services().defaults; }

private:
    static void clear() {
        CFArrayRef const keys = CFPreferencesCopyKeyList(kCFPreferencesCurrentApplication, kCFPreferencesCurrentUser,
                                                         kCFPreferencesAnyHost);
        if (keys != nullptr) {
            CFPreferencesSetMultiple(nullptr, keys, kCFPreferencesCurrentApplication, kCFPreferencesCurrentUser,
                                     kCFPreferencesAnyHost);
            CFRelease(keys);
        }
        CFPreferencesAppSynchronize(kCFPreferencesCurrentApplication);
    }
};

}  // namespace host_under_test
