// The files that a copy writes to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/ports/OpenFiles.h"

namespace KZFileManager {

struct CopyDestination {
    std::string path;
    std::unique_ptr<platform::OpenFile> file;
    platform::FileIdentity identity;
    bool created = false;  // by this copy
    bool emptied = false;  // by this copy: what it held before is lost
    bool complete = false;
};

// When it goes, what is not complete goes with it: a file that was created is removed, one that was emptied is empty.
class CopyDestinations {
public:
    CopyDestinations() = default;
    ~CopyDestinations();
    CopyDestinations(const CopyDestinations&) = delete;
    CopyDestinations& operator=(const CopyDestinations&) = delete;

    // Opens all of them, then empties them. False, after a line in the log, when one cannot be opened or is the source
    // or another destination, the contents of all being untouched then, or when one cannot be emptied.
    bool open(const std::vector<std::string>& paths, platform::OpenFile& source);

    // Appends the chunk to all of them; what fails is tried once more from where it stopped. False, after a line in the
    // log, when that fails too.
    bool append(std::span<const std::byte> chunk);

    // Whether closing went well; if not, after a line in the log, the destination is not complete.
    static bool close(CopyDestination& destination);

    std::vector<CopyDestination>& all() noexcept { return m_destinations; }

private:
    bool isTaken(const platform::FileIdentity& identity, platform::OpenFile& source) const;
    bool append(CopyDestination& destination, std::span<const std::byte> chunk) const;
    static void discard(CopyDestination& destination);

    std::vector<CopyDestination> m_destinations;
    std::uint64_t m_position = 0;  // of the next chunk
};

}  // namespace KZFileManager
