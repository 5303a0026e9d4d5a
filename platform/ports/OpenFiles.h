// The bytes of files, each operation one call on the operating system.
//
// Paths as in FileManager.h. Nothing throws. Descriptors are closed when another program is executed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "platform/ports/Error.h"
#include "platform/ports/FileManager.h"

namespace platform {

// What one call has moved, or the errno that kept it from moving anything.
struct Transfer {
    std::size_t bytes = 0;
    int code = 0;
};

// An open regular file with a position. It closes itself. One thread at a time.
class OpenFile {
public:
    virtual ~OpenFile() = default;

    // As much as one call brings, which may be less than asked for; 0 bytes without a code: the end of the file.
    virtual Transfer read(std::span<std::byte> buffer) = 0;
    virtual Transfer write(std::span<const std::byte> bytes) = 0;
    virtual int seek(std::uint64_t position) = 0;  // from the start; 0 or an errno
    virtual int truncate() = 0;                    // to nothing; the position stays; 0 or an errno

    virtual std::optional<std::uint64_t> size() = 0;  // bytes, at present
    virtual std::optional<FileIdentity> identity() = 0;

    // Gives this file the other's mode, times, extended attributes and access list; the owner too for the superuser.
    // What this file's system cannot hold at all is left out.
    virtual Failure copyAttributesFrom(OpenFile& source) = 0;

    // Ahead of the object's end, for a host that tells only now that something was not written; 0 or an errno. At most
    // once, as the last call.
    virtual int close() = 0;
};

// Any thread.
class OpenFiles {
public:
    virtual ~OpenFiles() = default;

    struct Opened {
        std::unique_ptr<OpenFile> file;  // none: not opened, code says why
        bool created = false;
        int code = 0;  // an errno
    };

    // Both follow links, never wait, and refuse what is no regular file: pipes, sockets and devices are not touched.
    virtual Opened openForReading(const std::string& path) = 0;

    // For reading and writing; the contents stay. A missing file is made, for its owner alone; a dangling link is
    // refused.
    virtual Opened openForWriting(const std::string& path) = 0;

    // A C stream for binary reading that is the caller's to close; null with errno set when it cannot be opened.
    // Follows links and never waits: refuses pipes, sockets and character devices. A folder opens; reading it fails.
    virtual std::FILE* openStream(const std::string& path) = 0;

    // Closes the descriptor of that number, whoever it belongs to; without effect when there is none.
    virtual void closeDescriptor(int number) = 0;
};

}  // namespace platform
