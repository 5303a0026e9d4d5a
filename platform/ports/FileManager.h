// Files, folders and links of the host, each operation at most a handful of calls on the operating system.
//
// Paths are UTF-8 strings (on Linux: any bytes but NUL) and are used as they stand. Every operation may be called from
// any thread, blocks until it is done and throws nothing.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/ports/Date.h"
#include "platform/ports/Error.h"

namespace platform {

enum class FileType { unknown, regular, folder, symbolicLink, other };

struct DirectoryEntry {
    std::string name;
    FileType type = FileType::unknown;  // a link is a link here; unknown when the host does not say for free
};

// An entry of a folder that is being visited. The name is gone when the visit is over.
struct VisitedEntry {
    std::string_view name;
    FileType type = FileType::unknown;
    std::uint64_t size = 0;  // bytes, of a link its own; 0 for a folder and when sizes were not asked for
};
enum class VisitSizes { no, yes };

struct FileAttributes {
    FileType type = FileType::unknown;
    std::uint64_t size = 0;    // bytes
    unsigned permissions = 0;  // the nine permission bits, set-id and sticky bits
    bool immutable = false;    // the locked flag
    Date modificationDate;
    std::optional<Date> creationDate;
};

// Tells two items apart whatever path leads to them.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

enum class Intermediates { no, yes };

class FileManager {
public:
    virtual ~FileManager() = default;

    // Follow a final symbolic link: a dangling link does not exist.
    virtual bool fileExists(const std::string& path) = 0;
    virtual bool isFolder(const std::string& path) = 0;
    virtual bool isWritable(const std::string& path) = 0;
    virtual bool isExecutable(const std::string& path) = 0;
    virtual std::optional<FileIdentity> identity(const std::string& path) = 0;

    // Do not follow a final symbolic link; none when nothing is there or it cannot be looked at.
    virtual std::optional<FileAttributes> attributes(const std::string& path) = 0;
    virtual std::optional<std::string> destinationOfSymbolicLink(const std::string& path) = 0;

    // Names of a folder, hidden ones included, "." and ".." not, in the order in which the host lists them.
    // None when the folder cannot be read.
    virtual std::optional<std::vector<DirectoryEntry>> contentsOfDirectory(const std::string& path) = 0;

    // The same entries in the same order, handed over one by one instead of kept. False when the folder cannot be read,
    // or not to its end. Unless a host knows a shorter way: by way of contentsOfDirectory and attributes.
    virtual bool visitDirectory(const std::string& path, VisitSizes sizes,
                                const std::function<void(const VisitedEntry&)>& visit);

    // Removes an item, a folder with all that lies in it; links are removed, never followed.
    virtual Failure removeItem(const std::string& path) = 0;

    // With intermediates a folder that is already there is a success.
    virtual Failure createDirectory(const std::string& path, Intermediates intermediates) = 0;

    // Copies an item with its mode, times, extended attributes and access list; links as links; owner too for the
    // superuser. Fails when anything stands at the destination, a dangling link included. The destination name appears
    // only once the item is complete, so an interrupted copy leaves nothing under it.
    virtual Failure copyItem(const std::string& source, const std::string& destination) = 0;

    // Never replaces. Across file systems: copies, then removes; when the removal fails the copy is taken back.
    virtual Failure moveItem(const std::string& source, const std::string& destination) = 0;

    // Clearing a flag that is not set succeeds without touching the item; a file system that has no flag counts as
    // unlocked.
    virtual Failure setImmutable(const std::string& path, bool immutable) = 0;
    virtual Failure setPermissions(const std::string& path, unsigned permissions) = 0;
    virtual Failure setCreationDate(const std::string& path, Date date) = 0;
    virtual Failure setModificationDate(const std::string& path, Date date) = 0;  // follows a final link

    // Extended attributes by the name that people know them by; a host that wants a prefix puts it in front. Both
    // follow a final symbolic link.
    //
    // The size of the value in bytes. The value goes into `room`; without any room it is only measured, and room that
    // is too small is an error.
    virtual std::variant<std::size_t, Error> readExtendedAttribute(const std::string& path, const std::string& name,
                                                                   std::span<char> room) = 0;
    virtual Failure setExtendedAttribute(const std::string& path, const std::string& name,
                                         std::span<const char> value) = 0;

    // The label that people see as a colour: 0 for none, 1 to 7, of the item itself, a link not followed. None when
    // there is no item. Setting any other number fails.
    virtual std::optional<int> labelNumber(const std::string& path) = 0;
    virtual Failure setLabelNumber(const std::string& path, long number) = 0;

    // Replaces or creates the file in one step: a reader sees the old contents or the new ones.
    virtual Failure writeAtomically(const std::string& path, std::string_view contents) = 0;

    // Whole contents; none when the file cannot be read or is larger than the limit (bytes).
    virtual std::optional<std::string> readFile(const std::string& path, std::uint64_t limit) = 0;

    // An open file to append to, positioned at its end.
    class AppendHandle {
    public:
        virtual ~AppendHandle() = default;
        // All of it, or a failure. What a failure left of it is ended by a line break in front of the next piece.
        virtual Failure append(std::string_view bytes) = 0;
    };
    // None when there is no file (it is never created), something else stands there, or it cannot be opened for
    // writing.
    virtual std::unique_ptr<AppendHandle> openForAppending(const std::string& path) = 0;
};

}  // namespace platform
