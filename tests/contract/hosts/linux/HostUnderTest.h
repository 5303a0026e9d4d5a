// The host whose services the contracts are tested on.
#pragma once

#include <cerrno>
#include <string>

#include "platform/linux/services/LinuxConsole.h"
#include "platform/linux/services/LinuxHost.h"
#include "platform/linux/services/LinuxMainBundle.h"
#include "platform/linux/services/LinuxUserDefaults.h"
#include "platform/linux/services/files/LinuxFileManager.h"
#include "platform/linux/services/propertylists/LinuxPropertyLists.h"
#include "tests/fakes/FakeIdentity.h"
#include "tests/fakes/FakeMainBundle.h"
#include "tests/fakes/TemporaryFolder.h"

namespace host_under_test {

inline constexpr const char* name = "Linux";
inline constexpr const char* programFolder = "Linux";  // within Contents
inline constexpr const char* superusersHome = "/root";
inline constexpr const char* strangeName = ".hidden\n\xff";  // as strange as a file's name may be
inline constexpr int missingAttribute = ENODATA;

using Console = platform::linux_host::LinuxConsole;
using FileManager = platform::linux_host::LinuxFileManager;

inline const platform::Host& services() { return platform::linux_host::services(); }

// The bundle that lies there, with a program of that name.
class MainBundle : public platform::linux_host::LinuxMainBundle {
public:
    MainBundle(const std::string& path, const std::string& program)
        : LinuxMainBundle(*services().propertyLists, path + "/Contents/Linux/" + program) {}
};

// With nothing in them at first, and nothing left behind.
class UserDefaults {
public:
    UserDefaults() { m_identity.home = m_home.path(); }
    platform::UserDefaults& get() { return m_defaults; }

private:
    fakes::TemporaryFolder m_home;
    fakes::FakeIdentity m_identity;
    fakes::FakeMainBundle m_bundle;
    platform::linux_host::LinuxFileManager m_files;
    platform::linux_host::LinuxPropertyLists m_lists;
    platform::linux_host::LinuxUserDefaults m_defaults{{m_files, m_lists, m_bundle, m_identity}};
};

}  // namespace host_under_test
