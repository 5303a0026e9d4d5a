#include "tools/wickfield-bundle/create/SourceCopier.h"

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/services/files/FolderTrail.h"
#include "platform/linux/services/files/ItemMetadata.h"
#include "platform/linux/services/files/TreeCopier.h"
#include "platform/posix/Descriptor.h"
#include "tools/wickfield-bundle/create/CreateFailure.h"
#include "tools/wickfield-bundle/create/SourceWalk.h"

namespace wickfield_bundle {

namespace linux_host = platform::linux_host;
using platform::FileType;
using platform::posix::Descriptor;

// As it is found from an open folder.
struct SourceCopier::SourceFile {
    int folder;
    const std::string& name;
    const std::string& path;  // for people
    int linkFlag;             // AT_SYMLINK_NOFOLLOW, or 0 for a link that stands for what it leads to
};

namespace {

constexpr const char* quarantine = "user.com.apple.quarantine";

int resultOf(int result) { return result == 0 ? 0 : errno; }

}  // namespace

// One folder with all that lies in it.
class SourceCopier::FolderCopy : public SourceWalk::Visitor {
public:
    FolderCopy(SourceCopier& copier, SourceWalk& walk, Descriptor to)
        : m_copier(copier), m_walk(walk), m_to(std::move(to)) {}

    void enteredFolder(const std::string& name) override {
        throwWhenFailed(resultOf(::mkdirat(m_to.current(), name.c_str(), S_IRWXU)), "copy", m_walk.pathOf(name));
        throwWhenFailed(m_to.enter(name), "copy", m_walk.pathOf(name));
    }

    void foundEntry(const platform::DirectoryEntry& entry) override {
        const std::string path = m_walk.pathOf(entry.name);
        const SourceFile source{m_walk.folder(), entry.name, path, AT_SYMLINK_NOFOLLOW};
        if (entry.type == FileType::symbolicLink) {
            m_copier.copyLink(source, m_to.current());
        } else {
            m_copier.copyFile(source, m_to.current(), entry.name);
        }
    }

    void leavingFolder() override {
        const std::string& path = m_walk.path();
        struct stat after {};
        const int result = ::fstat(m_walk.folder(), &after);
        checkUnchanged(m_walk.status(), result, after, path);
        const struct stat wanted = m_copier.forCopy(m_walk.status(), path);
        throwWhenFailed(
            linux_host::copyMetadata(m_walk.folder(), wanted, m_to.current(), linux_host::Inheritance::none), "copy",
            path);
        (void)::fremovexattr(m_to.current(), quarantine);
    }

    void leftFolder() override { throwWhenFailed(m_to.leave(), "copy", m_walk.path()); }

private:
    SourceCopier& m_copier;
    SourceWalk& m_walk;
    linux_host::FolderTrail m_to;
};

void SourceCopier::copy(const std::string& source, int folder, const std::string& name) {
    struct stat status {};
    throwWhenFailed(resultOf(::stat(source.c_str(), &status)), "read", source);
    if (!S_ISDIR(status.st_mode)) {
        copyFile({AT_FDCWD, source, source, 0}, folder, name);
        return;
    }
    Descriptor from(::open(source.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    throwWhenFailed(from ? 0 : errno, "read", source);
    throwWhenFailed(resultOf(::mkdirat(folder, name.c_str(), S_IRWXU)), "copy", source);
    Descriptor to(::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    throwWhenFailed(to ? 0 : errno, "copy", source);
    SourceWalk walk(std::move(from), source);
    FolderCopy copy(*this, walk, std::move(to));
    walk.run(copy);
}

void SourceCopier::copyFile(const SourceFile& source, int folder, const std::string& name) {
    throwWhenInterrupted();
    // Something else may have taken the file's place by now: a pipe is not waited for.
    const int linkFlag = source.linkFlag != 0 ? O_NOFOLLOW : 0;
    const Descriptor from(
        ::openat(source.folder, source.name.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | linkFlag));
    throwWhenFailed(from ? 0 : errno, "read", source.path);
    const struct stat status = settledStatus(from.get(), source.path);
    if (!S_ISREG(status.st_mode)) {
        throw CreateFailure(uncopyable(source.path));
    }
    const Descriptor to(
        ::openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    throwWhenFailed(to ? 0 : errno, "copy", source.path);
    throwWhenFailed(
        linux_host::copyOpenFile(from.get(), forCopy(status, source.path), to.get(), linux_host::Inheritance::none),
        "copy", source.path);
    (void)::fremovexattr(to.get(), quarantine);
    struct stat after {};
    const int result = ::fstatat(source.folder, source.name.c_str(), &after, source.linkFlag);
    checkUnchanged(status, result, after, source.path);
}

void SourceCopier::copyLink(const SourceFile& source, int folder) {
    const std::string& name = source.name;
    struct stat status {};
    std::string target;
    throwWhenFailed(resultOf(::fstatat(source.folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW)), "read",
                    source.path);
    throwWhenFailed(linux_host::readLink(source.folder, name, target), "read", source.path);
    throwWhenFailed(resultOf(::symlinkat(target.c_str(), folder, name.c_str())), "copy", source.path);
    throwWhenFailed(linux_host::copyLinkMetadata(forCopy(status, source.path), folder, name.c_str()), "copy",
                    source.path);
}

struct stat SourceCopier::forCopy(const struct stat& status, const std::string& path) {
    struct stat wanted = status;
    wanted.st_mtim = m_times.forCopy(status.st_mtim);
    wanted.st_atim = wanted.st_mtim;
    if (S_ISREG(status.st_mode) && (status.st_mode & (S_ISUID | S_ISGID)) != 0) {
        m_warn("“" + path + "” has a set-id bit, which gives whoever runs it somebody else's rights");
    }
    return wanted;
}

}  // namespace wickfield_bundle
