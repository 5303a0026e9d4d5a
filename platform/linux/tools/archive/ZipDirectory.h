// The table of contents of a ZIP archive.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace platform::linux_host {

// One entry as the archive describes it; nothing of it has been checked against the entry's own header and data.
struct ZipEntry {
    std::string name;        // as the bytes stand there
    std::string headerName;  // what the entry's own header must repeat
    std::uint16_t method = 0;
    bool encrypted = false;
    std::uint32_t crc = 0;
    std::uint64_t packedSize = 0;
    std::uint64_t size = 0;
    std::uint64_t header = 0;    // where it begins in the file
    std::uint64_t room = 0;      // bytes from there to the next entry or to the table of contents
    std::optional<mode_t> mode;  // type and permissions, where a Unix system has noted them
    std::time_t modified = 0;
};

struct ZipLimits {
    std::uint64_t entries = 1'000'000;
    std::uint64_t directoryBytes = std::uint64_t{256} << 20U;
};

// The entries in the order of their data in the file, which may be open at any position. Throws ToolFailure for what is
// no ZIP archive, for one that is cut short or damaged, one in several volumes, one beyond the limits, and one whose
// entries overlap, as no archiver makes them and archives do that are meant to fill disks.
//
// A name is taken as the bytes that stand in the archive, whatever its UTF-8 flag says, since names of files are bytes
// here; a name in Unicode that an archiver has added counts instead.
std::vector<ZipEntry> readZipDirectory(int file, const ZipLimits& limits = {});

}  // namespace platform::linux_host
