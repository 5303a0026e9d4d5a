// Children that nobody waits for any more.
#pragma once

#include <sys/types.h>

#include <mutex>
#include <vector>

#include "platform/posix/Descriptor.h"
#include "platform/posix/Pipe.h"

namespace platform::posix {

// One thread waits for all of them together. It is started by the first and ends with the last, so a process without
// such children has no such thread.
class Reaper {
public:
    static Reaper& shared();  // never destroyed: the thread may outlive main

    // Takes over a child that has not been reaped. Any thread; returns at once; from now on its number must not be
    // used.
    void adopt(pid_t child, Descriptor exitWatch);

    Reaper(const Reaper&) = delete;
    Reaper& operator=(const Reaper&) = delete;

private:
    struct Child {
        pid_t pid = -1;
        Descriptor exitWatch;
    };

    Reaper() = default;
    void run();
    bool takeNewcomers(std::vector<Child>& children);

    std::mutex m_mutex;
    std::vector<Child> m_newcomers;
    Descriptor m_wake;  // writing end; open while the thread runs
    Descriptor m_woken;
    bool m_running = false;
};

}  // namespace platform::posix
