#include "tools/wickfield-bundle/check/EntryAttributes.h"

#include <sched.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <span>
#include <variant>

#include "platform/linux/services/workspace/Packages.h"

namespace wickfield_bundle {

EntryAttributes::EntryAttributes(platform::FileManager& files)
    : m_files(files), m_hasOwnFolder(::gettid() != ::getpid() && ::unshare(CLONE_FS) == 0) {}

// Goes there if it can.
bool EntryAttributes::isIn(int folder) {
    if (m_hasOwnFolder && m_present != folder) {
        m_present = ::fchdir(folder) == 0 ? folder : -1;
    }
    return m_hasOwnFolder && m_present == folder;
}

bool EntryAttributes::isPackage(int folder, const std::string& name, const std::string& path) {
    return platform::linux_host::isPackage(isIn(folder) ? name : path);
}

bool EntryAttributes::isQuarantined(int folder, const std::string& name, const std::string& path) {
    if (isIn(folder)) {
        return ::lgetxattr(name.c_str(), "user.com.apple.quarantine", nullptr, 0) >= 0;
    }
    const auto size = m_files.readExtendedAttribute(path, "com.apple.quarantine", std::span<char>{});
    return std::holds_alternative<std::size_t>(size);
}

}  // namespace wickfield_bundle
