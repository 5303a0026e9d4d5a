#include "tools/wickfield-bundle/create/SourceWalk.h"

#include <fcntl.h>

#include <cerrno>
#include <chrono>
#include <ctime>
#include <thread>
#include <utility>

#include "platform/linux/services/files/FolderListing.h"
#include "platform/posix/FileErrors.h"
#include "platform/posix/PathParts.h"
#include "tools/wickfield-bundle/create/CreateFailure.h"

namespace wickfield_bundle {

namespace linux_host = platform::linux_host;
namespace posix = platform::posix;
using platform::FileType;
using platform::posix::Descriptor;

void throwWhenFailed(int code, std::string_view doing, const std::string& path) {
    if (code != 0) {
        throw CreateFailure(posix::fileError(doing, path, code));
    }
}

FileType fileTypeOf(mode_t mode) {
    return S_ISREG(mode)   ? FileType::regular
           : S_ISDIR(mode) ? FileType::folder
           : S_ISLNK(mode) ? FileType::symbolicLink
                           : FileType::other;
}

void checkUnchanged(const struct stat& before, int result, const struct stat& after, const std::string& path) {
    if (result != 0 || before.st_ino != after.st_ino || before.st_dev != after.st_dev ||
        before.st_size != after.st_size || before.st_mtim.tv_sec != after.st_mtim.tv_sec ||
        before.st_mtim.tv_nsec != after.st_mtim.tv_nsec) {
        throw CreateFailure("“" + path +
                            "” changed while it was being copied; try again once nothing writes to it any more");
    }
}

struct stat settledStatus(int item, const std::string& path) {
    using std::chrono::nanoseconds;
    using std::chrono::seconds;
    constexpr nanoseconds longestTick = std::chrono::milliseconds(20);
    struct stat status {};
    throwWhenFailed(::fstat(item, &status) == 0 ? 0 : errno, "read", path);
    timespec now{};
    (void)::clock_gettime(CLOCK_REALTIME_COARSE, &now);
    const nanoseconds age =
        seconds(now.tv_sec - status.st_mtim.tv_sec) + nanoseconds(now.tv_nsec - status.st_mtim.tv_nsec);
    if (age >= nanoseconds(0) && age < longestTick) {
        std::this_thread::sleep_for(longestTick - age);
        struct stat after {};
        const int result = ::fstat(item, &after);
        checkUnchanged(status, result, after, path);
    }
    return status;
}

std::string uncopyable(const std::string& path) {
    return "“" + path + "” is a pipe, a socket or a device, which no installer can carry; remove it from the source";
}

SourceWalk::SourceWalk(Descriptor start, std::string path) : m_trail(std::move(start)), m_path(std::move(path)) {}

std::string SourceWalk::pathOf(const std::string& name) const { return posix::joinPath(m_path, name); }

void SourceWalk::run(Visitor& visitor) {
    visitEntries(visitor);
    for (;;) {
        Level& level = m_levels.back();
        if (level.folders.empty()) {
            visitor.leavingFolder();
            if (m_levels.size() == 1) {
                return;
            }
            throwWhenFailed(m_trail.leave(), "read", m_path);
            m_path.resize(level.pathLength);
            m_levels.pop_back();
            visitor.leftFolder();
            continue;
        }
        const std::string name = std::move(level.folders.back());
        level.folders.pop_back();
        throwWhenFailed(m_trail.enter(name), "read", pathOf(name));
        visitor.enteredFolder(name);
        const std::size_t length = m_path.size();
        m_path += m_path.ends_with('/') ? "" : "/";
        m_path += name;
        visitEntries(visitor);
        m_levels.back().pathLength = length;
    }
}

void SourceWalk::visitEntries(Visitor& visitor) {
    throwWhenInterrupted();
    Level& level = m_levels.emplace_back();
    level.status = settledStatus(folder(), m_path);
    std::vector<platform::DirectoryEntry> entries;
    throwWhenFailed(linux_host::listFolder(folder(), entries), "read", m_path);
    for (auto& entry : entries) {
        if (entry.type == FileType::unknown) {
            struct stat status {};
            const int code = ::fstatat(folder(), entry.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 ? 0 : errno;
            throwWhenFailed(code, "read", pathOf(entry.name));
            entry.type = fileTypeOf(status.st_mode);
        }
        if (entry.type == FileType::folder) {
            level.folders.push_back(std::move(entry.name));
        } else {
            visitor.foundEntry(entry);
        }
    }
}

namespace {

class Scan : public SourceWalk::Visitor {
public:
    explicit Scan(const SourceWalk& walk) : m_walk(walk) {}
    void enteredFolder(const std::string&) override {}
    void foundEntry(const platform::DirectoryEntry& entry) override {
        if (entry.type == FileType::other) {
            throw CreateFailure(uncopyable(m_walk.pathOf(entry.name)));
        }
    }
    void leavingFolder() override {}
    void leftFolder() override {}

private:
    const SourceWalk& m_walk;
};

}  // namespace

std::string findUncopyable(const std::string& source) {
    Descriptor start(::open(source.c_str(), O_PATH | O_CLOEXEC));
    struct stat status {};
    if (!start || ::fstat(start.get(), &status) != 0) {
        return posix::fileError("read", source, errno).description;
    }
    if (!S_ISDIR(status.st_mode)) {
        return S_ISREG(status.st_mode) ? "" : uncopyable(source);
    }
    start.reset(::open(source.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!start) {
        return posix::fileError("read", source, errno).description;
    }
    SourceWalk walk(std::move(start), source);
    Scan scan(walk);
    try {
        walk.run(scan);
    } catch (const CreateInterrupted&) {
        throw;
    } catch (const CreateFailure& failure) {
        return failure.what();
    }
    return "";
}

}  // namespace wickfield_bundle
