// A walk through one of the maker's folders.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/services/files/FolderTrail.h"
#include "platform/ports/FileManager.h"
#include "platform/posix/Descriptor.h"

namespace wickfield_bundle {

// Any depth, with a bounded number of descriptors; links are not followed. One thread.
class SourceWalk {
public:
    class Visitor {
    public:
        virtual ~Visitor() = default;
        virtual void enteredFolder(const std::string& name) = 0;             // not for the first; its entries come next
        virtual void foundEntry(const platform::DirectoryEntry& entry) = 0;  // anything but a folder; kind is known
        virtual void leavingFolder() = 0;                                    // all that lies in it was visited
        virtual void leftFolder() = 0;                                       // back in the one above; not for the first
    };

    SourceWalk(platform::posix::Descriptor start, std::string path);

    // Once. Throws CreateFailure for a folder that cannot be read, CreateInterrupted, and what the visitor throws.
    void run(Visitor& visitor);

    int folder() const { return m_trail.current(); }
    const struct stat& status() const { return m_levels.back().status; }  // of the folder, from before it was read
    const std::string& path() const { return m_path; }
    std::string pathOf(const std::string& name) const;

private:
    struct Level {
        std::size_t pathLength = 0;
        struct stat status {};
        std::vector<std::string> folders;  // still to be visited
    };

    void visitEntries(Visitor& visitor);

    platform::linux_host::FolderTrail m_trail;
    std::string m_path;
    std::vector<Level> m_levels;
};

// "Cannot <doing> “<path>”: <what the number means>"; `code` is an errno, and 0 throws nothing.
void throwWhenFailed(int code, std::string_view doing, const std::string& path);

platform::FileType fileTypeOf(mode_t mode);

// What an open file or folder is like, of a moment from which on any change shows in its time: clocks of file systems
// tick in steps, and one that was changed just now is waited for to settle, some 20 ms. Throws CreateFailure, also for
// one that is changed meanwhile.
struct stat settledStatus(int item, const std::string& path);

// Throws CreateFailure when what a look after the work gave is no longer what a look before it gave. `result` is the
// second look's.
void checkUnchanged(const struct stat& before, int result, const struct stat& after, const std::string& path);

// What is said of a pipe, a socket or a device.
std::string uncopyable(const std::string& path);

// What lies in a source that no bundle can hold: the first pipe, socket or device, or a folder that cannot be read, in
// words; "" when there is none. Looks at the names and kinds only. `source` may be a link to what is meant.
std::string findUncopyable(const std::string& source);

}  // namespace wickfield_bundle
