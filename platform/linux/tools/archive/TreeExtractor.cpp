#include "platform/linux/tools/archive/TreeExtractor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/tools/archive/FileBytes.h"
#include "platform/linux/tools/archive/Interruption.h"
#include "platform/linux/tools/archive/OpenFolders.h"
#include "platform/linux/tools/archive/StagedFolder.h"
#include "platform/linux/tools/archive/ToolFailure.h"
#include "platform/linux/tools/archive/ZipContents.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/PathParts.h"

namespace platform::linux_host {

namespace {

constexpr mode_t permissionBits = 0777;

mode_t currentMask() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return mask;
}

// Whether the permissions of what is made in the folder depend on more than the mask.
bool handsDownAccessList(int folder) { return ::fgetxattr(folder, "system.posix_acl_default", nullptr, 0) > 0; }

struct Place {
    std::string_view folder;
    std::string name;
};

Place placeOf(const std::string& path) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos) {
        return {.folder = {}, .name = path};
    }
    return {.folder = std::string_view(path).substr(0, slash), .name = path.substr(slash + 1)};
}

std::array<timespec, 2> timesOf(const ZipEntry& entry) {
    return {timespec{.tv_sec = 0, .tv_nsec = UTIME_NOW}, timespec{.tv_sec = entry.modified, .tv_nsec = 0}};
}

bool isAllZeros(std::string_view bytes) { return bytes.find_first_not_of('\0') == std::string_view::npos; }

// Writes what comes one piece after another; large pieces of zeros are left out.
class SparseWriter {
public:
    explicit SparseWriter(int file) : m_file(file) {}

    void put(std::string_view bytes) {
        constexpr std::size_t smallestHole = std::size_t{64} * 1024;
        if (bytes.size() >= smallestHole && isAllZeros(bytes)) {
            if (::lseek(m_file, static_cast<off_t>(bytes.size()), SEEK_CUR) < 0) {
                throw ToolFailure("cannot write");
            }
            m_endsInHole = true;
        } else if (!bytes.empty()) {
            writeAll(m_file, bytes);
            m_endsInHole = false;
        }
    }
    void finish(std::uint64_t size) const {
        if (m_endsInHole && ::ftruncate(m_file, static_cast<off_t>(size)) != 0) {
            throw ToolFailure("cannot write");
        }
    }

private:
    int m_file;
    bool m_endsInHole = false;
};

class TreeExtractor {
public:
    TreeExtractor(int archive, int root, const std::vector<ZipEntry>& entries)
        : m_archive(archive),
          m_entries(entries),
          m_folders(root),
          m_mask(currentMask()),
          m_inheritance(handsDownAccessList(root)) {}

    void unpack(const std::vector<PlannedItem>& items) {
        make(items, ItemKind::folder);
        make(items, ItemKind::file);
        make(items, ItemKind::link);
    }

private:
    void make(const std::vector<PlannedItem>& items, ItemKind kind) {
        for (const auto& item : items) {
            if (item.kind != kind) {
                continue;
            }
            checkInterruption();
            try {
                makeItem(item);
            } catch (const Interrupted&) {
                throw;
            } catch (const ToolFailure& failure) {
                throw ToolFailure("“" + item.path + "”: " + failure.what());
            }
        }
    }

    void makeItem(const PlannedItem& item) {
        if (item.kind == ItemKind::folder) {
            m_folders.open(item.path);
        } else if (item.kind == ItemKind::file) {
            makeFile(item);
        } else {
            makeLink(item);
        }
    }

    void makeFile(const PlannedItem& item) {
        const ZipEntry& entry = m_entries[item.entry];
        const Place place = placeOf(item.path);
        constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
        const mode_t mode = entry.mode ? *entry.mode & permissionBits : 0666 & ~m_mask;
        posix::Descriptor file(::openat(m_folders.open(place.folder), place.name.c_str(), flags, mode));
        if (!file) {
            failWithErrno("cannot make", item.path, errno);
        }
        SparseWriter writer(file.get());
        readZipContents(m_archive, entry, [&](std::string_view bytes) { writer.put(bytes); });
        writer.finish(entry.size);
        // Not every file system holds permissions and dates.
        if (m_inheritance || (mode & m_mask) != 0) {
            (void)::fchmod(file.get(), mode);
        }
        (void)::futimens(file.get(), timesOf(entry).data());
        if (::close(file.release()) != 0) {
            failWithErrno("cannot write", item.path, errno);
        }
    }

    void makeLink(const PlannedItem& item) {
        const ZipEntry& entry = m_entries[item.entry];
        const std::string target = readShortZipContents(m_archive, entry, PATH_MAX - 1);
        if (target.empty() || target.find('\0') != std::string::npos) {
            throw ToolFailure("a link that leads nowhere");
        }
        const Place place = placeOf(item.path);
        const int folder = m_folders.open(place.folder);
        if (::symlinkat(target.c_str(), folder, place.name.c_str()) != 0) {
            failWithErrno("cannot make", item.path, errno);
        }
        (void)::utimensat(folder, place.name.c_str(), timesOf(entry).data(), AT_SYMLINK_NOFOLLOW);
    }

    int m_archive;
    const std::vector<ZipEntry>& m_entries;
    OpenFolders m_folders;
    mode_t m_mask;
    bool m_inheritance;
};

// Folders get their permissions and dates when all stands where it belongs, the innermost first: making or moving
// something in them would need the rights to, and change the date.
void finishFolders(int root, const std::vector<PlannedItem>& items, const std::vector<ZipEntry>& entries) {
    std::vector<const PlannedItem*> folders;
    for (const auto& item : items) {
        if (item.kind == ItemKind::folder) {
            folders.push_back(&item);
        }
    }
    std::stable_sort(folders.begin(), folders.end(),
                     [](const PlannedItem* left, const PlannedItem* right) { return left->path > right->path; });
    OpenFolders open(root);
    for (const auto* item : folders) {
        const ZipEntry& entry = entries[item->entry];
        const int folder = open.open(item->path);
        if (entry.mode) {
            (void)::fchmod(folder, *entry.mode & permissionBits);
        }
        (void)::futimens(folder, timesOf(entry).data());
    }
}

}  // namespace

void extractArchive(const std::string& archive, const std::string& destination, const ExtractionLimits& limits) {
    const posix::Descriptor file(::open(archive.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0) {
        failWithErrno("cannot open", archive, errno);
    }
    std::vector<ZipEntry> entries;
    std::vector<PlannedItem> items;
    try {
        entries = readZipDirectory(file.get());
        items = planExtraction(entries, static_cast<std::uint64_t>(status.st_size), limits);
    } catch (const ToolFailure& failure) {
        throw ToolFailure("“" + archive + "”: " + failure.what());
    }
    StagedFolder staged(destination);
    TreeExtractor(file.get(), staged.folder(), entries).unpack(items);
    if (staged.isForNew()) {
        (void)::fchmod(staged.folder(), permissionBits & ~currentMask());
        finishFolders(staged.folder(), items, entries);
        staged.takePlace();
    } else {
        std::erase_if(items, [](const PlannedItem& item) { return item.path.empty(); });
        finishFolders(staged.takePlace().get(), items, entries);
    }
}

}  // namespace platform::linux_host
