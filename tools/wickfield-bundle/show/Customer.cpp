#include "tools/wickfield-bundle/show/Customer.h"

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "platform/linux/services/LinuxStandardFolders.h"

namespace wickfield_bundle {

namespace {

constexpr unsigned someOrdinaryUser = 1000;

class CustomerIdentity : public platform::Identity {
public:
    CustomerIdentity(platform::Identity& present, std::string home) : m_present(present), m_home(std::move(home)) {}

    unsigned realUserID() override {
        const unsigned number = m_present.realUserID();
        return number == 0 ? someOrdinaryUser : number;
    }
    std::string userName() override { return m_present.userName(); }
    std::string homeFolder() override { return m_home; }
    std::optional<std::string> homeFolderForUser(const std::string& /*name*/) override { return m_home; }
    std::optional<std::string> consoleUser() override { return m_present.userName(); }

private:
    platform::Identity& m_present;
    std::string m_home;
};

// What the caller's session says about folders is about his own.
void forgetOwnFolders() {
    for (const char* variable : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"}) {
        ::unsetenv(variable);
    }
}

}  // namespace

struct Customer::Services {
    explicit Services(const std::string& home) : identity(*platform::host().identity, home) {}

    CustomerIdentity identity;
    platform::linux_host::LinuxStandardFolders folders{identity};
};

Customer::Customer(const std::string& home) : m_services(std::make_unique<Services>(home)) { forgetOwnFolders(); }

Customer::~Customer() = default;

platform::Host Customer::host() const {
    platform::Host host = platform::host();
    host.identity = &m_services->identity;
    host.folders = &m_services->folders;
    return host;
}

std::optional<std::string> becomeUser(const std::string& name) {
    errno = 0;
    const passwd* const account = ::getpwnam(name.c_str());
    if (account == nullptr) {
        return "there is no user " + name;
    }
    if (account->pw_uid == ::getuid()) {
        return std::nullopt;
    }
    if (::geteuid() != 0) {
        return std::string("only the superuser can look with another user's rights");
    }
    const std::string home = account->pw_dir;
    if (::initgroups(name.c_str(), account->pw_gid) != 0 || ::setgid(account->pw_gid) != 0 ||
        ::setuid(account->pw_uid) != 0) {
        return "the system refuses the rights of " + name + ": " + std::generic_category().message(errno);
    }
    ::setenv("HOME", home.c_str(), 1);
    forgetOwnFolders();
    return std::nullopt;
}

}  // namespace wickfield_bundle
