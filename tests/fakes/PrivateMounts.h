#pragma once

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>
#include <vector>

#include "platform/posix/Descriptor.h"

// For a scope the calling thread has mounts of its own; threads that it starts share them. For the superuser.
class PrivateMounts {
public:
    PrivateMounts() {
        m_isolated = ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    }
    ~PrivateMounts() {
        for (; !m_mounted.empty(); m_mounted.pop_back()) {
            (void)::umount2(m_mounted.back().c_str(), MNT_DETACH);
        }
        // Refused while a thread that was started meanwhile lives on, which does no harm: nothing is mounted any more.
        (void)::setns(m_before.get(), CLONE_NEWNS);
        (void)::fchdir(m_workingFolder.get());
    }
    PrivateMounts(const PrivateMounts&) = delete;
    PrivateMounts& operator=(const PrivateMounts&) = delete;

    // False where the machine allows no mounts of one's own.
    bool isolated() const { return m_isolated; }

    // A fresh file system in memory, which goes with the scope.
    bool fileSystemAt(const std::string& folder) {
        const bool mounted = m_isolated && (::mkdir(folder.c_str(), 0755) == 0 || errno == EEXIST) &&
                             ::mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=16m,mode=755") == 0;
        return remembered(mounted, folder);
    }
    // The file stands in for another one.
    bool replace(const std::string& path, const std::string& file) {
        return remembered(m_isolated && ::mount(file.c_str(), path.c_str(), nullptr, MS_BIND, nullptr) == 0, path);
    }

private:
    bool remembered(bool mounted, const std::string& place) {
        if (mounted) {
            m_mounted.push_back(place);
        }
        return mounted;
    }

    platform::posix::Descriptor m_before{::open("/proc/thread-self/ns/mnt", O_RDONLY | O_CLOEXEC)};
    platform::posix::Descriptor m_workingFolder{::open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)};
    bool m_isolated = false;
    std::vector<std::string> m_mounted;
};
