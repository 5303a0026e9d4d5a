#include "platform/linux/tools/archive/TreeArchiver.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/services/files/FolderListing.h"
#include "platform/linux/tools/archive/FileBytes.h"
#include "platform/linux/tools/archive/Interruption.h"
#include "platform/linux/tools/archive/Packing.h"
#include "platform/linux/tools/archive/StagedFile.h"
#include "platform/linux/tools/archive/ToolFailure.h"
#include "platform/linux/tools/archive/WorkLine.h"
#include "platform/linux/tools/archive/ZipFormat.h"
#include "platform/linux/tools/archive/ZipWriter.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/PathParts.h"
#include "platform/posix/RealPath.h"

namespace platform::linux_host {

namespace {

// Files up to this size are packed in memory, several at a time; larger ones one after another, a piece at a time.
constexpr std::uint64_t smallFile = std::uint64_t{4} << 20U;

// Where something stands, whatever path leads there.
class Spot {
public:
    explicit Spot(const std::string& path) : m_name(posix::splitPath(path).name) {
        m_known = ::stat(posix::splitPath(path).folder.c_str(), &m_folder) == 0;
    }
    bool is(int folder, const std::string& name) const {
        struct stat status {};
        return m_known && name == m_name && ::fstat(folder, &status) == 0 && isSame(status, m_folder);
    }
    friend bool operator==(const Spot& left, const Spot& right) {
        return left.m_known && right.m_known && left.m_name == right.m_name && isSame(left.m_folder, right.m_folder);
    }

private:
    static bool isSame(const struct stat& left, const struct stat& right) {
        return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
    }
    std::string m_name;
    struct stat m_folder {};
    bool m_known = false;
};

struct PackedItem {
    ArchivedItem item;
    PackedFile contents;
};

class TreeArchiver {
public:
    using Tell = std::function<void(const std::string&)>;

    TreeArchiver(int output, Spot spot, const Tell& tell, ClockTimes clock)
        : m_tell(tell),
          m_writer(output, clock),
          m_spot(std::move(spot)),
          m_threads(std::clamp(std::thread::hardware_concurrency(), 1U, 16U)),
          m_line(m_threads) {
        struct stat status {};
        if (::fstat(output, &status) != 0) {
            throw ToolFailure("cannot write the archive");
        }
        m_outputDevice = status.st_dev;
        m_outputInode = status.st_ino;
    }

    void addFile(int folder, const std::string& name, const std::string& path) {
        posix::Descriptor file(::openat(folder, name.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
        struct stat status {};
        if (!file || ::fstat(file.get(), &status) != 0) {
            failWithErrno("cannot read", path, errno);
        }
        if (!S_ISREG(status.st_mode)) {
            throw ToolFailure("cannot read “" + path + "”: not a file");
        }
        addOpenFile(std::move(file), status, path);
    }

    // The folder itself, unless its path is empty, and all that lies in it.
    void addFolder(posix::Descriptor folder, const std::string& path) {
        enter(std::move(folder), path);
        while (!m_levels.empty()) {
            Level& level = m_levels.back();
            m_path.resize(level.pathLength);
            if (level.names.empty()) {
                m_levels.pop_back();
                continue;
            }
            const std::string name = std::move(level.names.back());
            level.names.pop_back();
            addItem(level.folder.get(), name, m_path.empty() ? name : m_path + "/" + name);
        }
    }

    void finish() {
        while (m_line.size() > 0) {
            writeOldest();
        }
        m_writer.finish();
    }

private:
    // A folder on the way from the source to the item that is being added.
    struct Level {
        posix::Descriptor folder;
        std::size_t pathLength = 0;
        std::vector<std::string> names;  // of what is still to be added, the next one last
    };

    void enter(posix::Descriptor folder, const std::string& path) {
        if (!path.empty()) {
            struct stat status {};
            if (::fstat(folder.get(), &status) != 0) {
                failWithErrno("cannot read", path, errno);
            }
            addWhole({.name = path + "/", .mode = status.st_mode, .modified = status.st_mtime}, {});
        }
        std::vector<std::string> names;
        const int code = visitFolder(folder.get(), VisitSizes::no,
                                     [&](const VisitedEntry& entry) { names.emplace_back(entry.name); });
        if (code != 0) {
            failWithErrno("cannot list", path, code);
        }
        std::sort(names.begin(), names.end(), std::greater<>());
        m_path = path;
        m_levels.push_back({std::move(folder), path.size(), std::move(names)});
    }

    void addItem(int folder, const std::string& name, const std::string& path) {
        checkInterruption();
        struct stat status {};
        if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            skipVanished(path, errno);
            return;
        }
        if (S_ISLNK(status.st_mode)) {
            addLink(folder, name, {.name = path, .mode = status.st_mode, .modified = status.st_mtime});
            return;
        }
        if (!S_ISDIR(status.st_mode) && !S_ISREG(status.st_mode)) {
            m_tell("left out, as it is neither a file nor a folder nor a link: “" + path + "”");
            return;
        }
        const bool isOutput = status.st_dev == m_outputDevice && status.st_ino == m_outputInode;
        if (isOutput || m_spot.is(folder, name)) {
            return;
        }
        // It may have become something else meanwhile: nothing is followed, and nothing is waited for.
        constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
        posix::Descriptor item(::openat(folder, name.c_str(), flags));
        if (!item || ::fstat(item.get(), &status) != 0) {
            skipVanished(path, errno);
        } else if (S_ISDIR(status.st_mode)) {
            enter(std::move(item), path);
        } else {
            addOpenFile(std::move(item), status, path);
        }
    }

    void skipVanished(const std::string& path, int code) {
        if (code != ENOENT) {
            failWithErrno("cannot read", path, code);
        }
        m_tell("left out, as it is no longer there: “" + path + "”");
    }

    void addLink(int folder, const std::string& name, const ArchivedItem& item) {
        std::string target(PATH_MAX, '\0');
        const ssize_t length = ::readlinkat(folder, name.c_str(), target.data(), target.size());
        if (length < 0) {
            skipVanished(item.name, errno);
            return;
        }
        target.resize(static_cast<std::size_t>(length));
        addWhole(item, std::move(target));
    }

    // In line with the files that are being packed.
    void addWhole(ArchivedItem item, std::string bytes) {
        makeRoom();
        m_line.add([item = std::move(item), bytes = std::move(bytes)]() mutable {
            return PackedItem{std::move(item), keepAsIs(std::move(bytes))};
        });
    }

    void addOpenFile(posix::Descriptor file, const struct stat& status, const std::string& path) {
        ArchivedItem item{.name = path, .mode = status.st_mode, .modified = status.st_mtime};
        const auto size = static_cast<std::uint64_t>(status.st_size);
        if (size <= smallFile) {
            makeRoom();
            const auto shared = std::make_shared<posix::Descriptor>(std::move(file));
            m_line.add([item = std::move(item), shared, size] {
                const posix::Descriptor closedAfterwards = std::move(*shared);
                return PackedItem{item, packNamed(item, [&] { return packSmallFile(closedAfterwards.get(), size); })};
            });
            return;
        }
        while (m_line.size() > 0) {
            writeOldest();
        }
        m_writer.add(item, size, [&](const ZipWriter::Sink& sink) {
            return packNamed(item, [&] { return packLargeFile(file.get(), size, sink); });
        });
    }

    template <typename Pack>
    static auto packNamed(const ArchivedItem& item, const Pack& pack) -> decltype(pack()) {
        try {
            return pack();
        } catch (const Interrupted&) {
            throw;
        } catch (const ToolFailure& failure) {
            throw ToolFailure("“" + item.name + "”: " + failure.what());
        }
    }

    void makeRoom() {
        while (m_line.size() >= std::size_t{m_threads} * 4) {
            writeOldest();
        }
    }
    void writeOldest() {
        const PackedItem packed = m_line.takeOldest();
        m_writer.add(packed.item, packed.contents);
    }

    const Tell& m_tell;
    ZipWriter m_writer;
    std::vector<Level> m_levels;
    std::string m_path;  // of the innermost, or of one that was in it
    Spot m_spot;         // of the archive, where an older one may stand still
    dev_t m_outputDevice = 0;
    ino_t m_outputInode = 0;
    unsigned m_threads;
    WorkLine<PackedItem> m_line;
};

// What the source is called where its path does not end in a name, as in "." or "folder/..".
std::string nameOf(const std::string& source) {
    std::string name = posix::splitPath(source).name;
    if (name == "." || name == "..") {
        name = posix::splitPath(posix::realPath(source)).name;
    }
    return name;
}

}  // namespace

void archiveTree(const std::string& source, const std::string& archive, KeepParent keepParent,
                 const std::function<void(const std::string&)>& tell, ClockTimes clock) {
    struct stat status {};
    if (::stat(source.c_str(), &status) != 0) {
        failWithErrno("cannot read", source, errno);
    }
    const Spot spot(archive);
    if (!S_ISDIR(status.st_mode) && Spot(source) == spot) {
        throw ToolFailure("“" + archive + "” would take the place of what it is to hold");
    }
    StagedFile output(archive);
    TreeArchiver archiver(output.file(), spot, tell, clock);
    if (S_ISDIR(status.st_mode)) {
        posix::Descriptor folder(::open(source.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!folder) {
            failWithErrno("cannot read", source, errno);
        }
        archiver.addFolder(std::move(folder), keepParent == KeepParent::yes ? nameOf(source) : std::string());
    } else {
        archiver.addFile(AT_FDCWD, source, nameOf(source));
    }
    archiver.finish();
    output.takePlace();
}

}  // namespace platform::linux_host
