// Handling files with somebody's rights instead of the superuser's.
#pragma once

#include <sys/types.h>

#include <optional>
#include <vector>

#include "platform/linux/services/files/Ownership.h"

namespace platform::linux_host {

// For as long as it lives, this thread finds, makes and removes files as the user: what he arranges in his own folders
// leads it nowhere where he could not go himself, and what it makes is his. Of his groups only the one given counts. No
// other thread is concerned. For the superuser only; without a user nothing changes. Scopes may be nested.
class ActingAs {
public:
    explicit ActingAs(const std::optional<Owner>& user);
    ~ActingAs();
    ActingAs(const ActingAs&) = delete;
    ActingAs& operator=(const ActingAs&) = delete;

    // False when the host refuses the user's rights; the thread has its own then.
    explicit operator bool() const { return m_granted; }

private:
    void giveUp();

    bool m_granted = false;
    bool m_changed = false;
    uid_t m_userBefore = 0;
    gid_t m_groupBefore = 0;
    std::vector<gid_t> m_groupsBefore;
};

}  // namespace platform::linux_host
