// Writing a ZIP archive.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <ctime>
#include <functional>
#include <string>
#include <string_view>

#include "platform/linux/tools/archive/Packing.h"

namespace platform::linux_host {

// An item as the table of contents tells of it. The name is relative and its bytes are stored as they are, marked as
// UTF-8 where they are; a folder's ends in "/". Owner, extended attributes and fractions of seconds are not kept, as
// the format has no common place for them.
struct ArchivedItem {
    std::string name;
    mode_t mode = 0;  // type and permissions
    std::time_t modified = 0;
};

// What the clock shows that goes with an item's time: the format has one in local time, beside the time that is meant
// everywhere. Only with the universal one are the bytes of an archive the same wherever they are made.
enum class ClockTimes { local, universal };

// Writes from the file's present position on, which must be its start. Everything throws ToolFailure.
class ZipWriter {
public:
    using Sink = std::function<void(std::string_view)>;

    explicit ZipWriter(int file, ClockTimes clock = ClockTimes::local) : m_file(file), m_clock(clock) {}  // not owned

    void add(const ArchivedItem& item, const PackedFile& contents);

    // For contents whose sums are known only when `pack` has handed all of them to the sink. `size` is the most that
    // there will be; beyond 4 GiB the wide form of the format is used.
    void add(const ArchivedItem& item, std::uint64_t size, const std::function<PackedSums(const Sink&)>& pack);

    // The table of contents, after the last item.
    void finish();

private:
    struct Header {
        const ArchivedItem& item;
        PackedSums sums;
        bool isWide;
        ClockTimes clock;
    };
    void put(std::string_view bytes);
    void flush();
    void addToDirectory(const Header& header, std::uint64_t offset);
    static void appendCommon(std::string& bytes, const Header& header);
    static std::string localHeader(const Header& header);

    int m_file;
    ClockTimes m_clock;
    std::string m_buffer;
    std::uint64_t m_offset = 0;  // including the buffer
    std::string m_directory;
    std::uint64_t m_entries = 0;
};

}  // namespace platform::linux_host
