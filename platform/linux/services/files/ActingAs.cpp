#include "platform/linux/services/files/ActingAs.h"

#include <sys/fsuid.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace platform::linux_host {

namespace {

// The C library's function of this name would change every thread.
bool setGroupsOfThread(const std::vector<gid_t>& groups) {
    return ::syscall(SYS_setgroups, groups.size(), groups.data()) == 0;
}

// Asked for an impossible identity, both calls change nothing and tell the present one.
uid_t presentUser() { return static_cast<uid_t>(::setfsuid(static_cast<uid_t>(-1))); }
gid_t presentGroup() { return static_cast<gid_t>(::setfsgid(static_cast<gid_t>(-1))); }

}  // namespace

ActingAs::ActingAs(const std::optional<Owner>& user) {
    if (!user) {
        m_granted = true;
        return;
    }
    const int count = ::getgroups(0, nullptr);
    if (count < 0) {
        return;
    }
    m_groupsBefore.resize(static_cast<std::size_t>(count));
    if (::getgroups(count, m_groupsBefore.data()) != count || !setGroupsOfThread({})) {
        return;
    }
    m_changed = true;
    m_groupBefore = static_cast<gid_t>(::setfsgid(user->group));
    m_userBefore = static_cast<uid_t>(::setfsuid(user->user));
    m_granted = presentUser() == user->user && presentGroup() == user->group;
    if (!m_granted) {
        giveUp();
    }
}

ActingAs::~ActingAs() { giveUp(); }

void ActingAs::giveUp() {
    if (!m_changed) {
        return;
    }
    const int code = errno;
    ::setfsuid(m_userBefore);
    ::setfsgid(m_groupBefore);
    (void)setGroupsOfThread(m_groupsBefore);
    m_changed = false;
    errno = code;
}

}  // namespace platform::linux_host
