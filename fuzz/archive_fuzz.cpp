// Archives of any bytes, and archives of any entries with some bytes changed, unpacked as a new folder or into one that
// has a link out of it: whatever is unpacked stays within the destination, and what is refused leaves nothing.
//
// An input ends in two bytes of choices; an odd one before the last makes the rest an archive as it stands.
#include <fuzzer/FuzzedDataProvider.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "platform/linux/services/files/ItemRemover.h"
#include "platform/linux/tools/archive/ToolFailure.h"
#include "platform/linux/tools/archive/TreeExtractor.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/tools/ZipMaker.h"

namespace fs = std::filesystem;

namespace {

// In memory where there is such a place: each input makes a tree and removes it.
std::string quickPlace() { return ::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : fs::temp_directory_path().string(); }

std::size_t itemsIn(const fs::path& folder) {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

std::string anyName(FuzzedDataProvider& input) {
    constexpr std::size_t longestName = 24;
    const auto* const usual = input.PickValueInArray({"", "link", "link/file", "folder/", "folder/file", "..", "/"});
    return usual + input.ConsumeRandomLengthString(longestName);
}

RawEntry anyEntry(FuzzedDataProvider& input) {
    constexpr std::size_t longestName = 24;
    constexpr std::size_t longestFile = 300;
    RawEntry entry{.name = anyName(input), .contents = input.ConsumeRandomLengthString(longestFile)};
    entry.mode = input.PickValueInArray<std::uint32_t>(
        {S_IFREG | 0644, S_IFDIR | 0755, S_IFLNK | 0777, S_IFREG | 06755, S_IFDIR, S_IFIFO | 0666, 0});
    entry.host = input.PickValueInArray<std::uint8_t>({3, 0, 19});
    entry.flags = input.PickValueInArray<std::uint16_t>({0, 1U << 11U, 8, 1});
    if (input.ConsumeBool()) {
        entry.method = 8;
        entry.packed = deflated(entry.contents);
    }
    if (input.ConsumeIntegralInRange(0, 15) == 0) {
        entry.extras = input.ConsumeRandomLengthString(longestName);
        entry.size = input.ConsumeIntegral<std::uint32_t>();
        entry.offset = input.ConsumeIntegralInRange<std::uint32_t>(0, longestFile);
    }
    return entry;
}

std::string anyArchive(FuzzedDataProvider& input) {
    if (input.ConsumeBool()) {
        return input.ConsumeRemainingBytesAsString();
    }
    const int changes = std::max(0, input.ConsumeIntegralInRange(-8, 4));
    ZipMaker zip;
    for (int i = input.ConsumeIntegralInRange(0, 6); i > 0; --i) {
        zip.add(anyEntry(input));
    }
    std::string bytes = zip.bytes();
    for (int i = 0; i < changes; ++i) {
        bytes[input.ConsumeIntegralInRange<std::size_t>(0, bytes.size() - 1)] = input.ConsumeIntegral<char>();
    }
    return bytes;
}

constexpr const char* secret = "not to be written to";

// A destination that is there, with something to merge with and a way out.
void fillDestination(const fs::path& destination, const fs::path& outside) {
    fs::create_directories(destination / "folder");
    std::ofstream(destination / "folder/file") << "old";
    fs::create_directory_symlink(outside, destination / "link");
    fs::create_directory_symlink(outside, destination / "folder/link");
}

bool isUntouched(const fs::path& outside) {
    std::string contents;
    std::getline(std::ifstream(outside / "file"), contents);
    return itemsIn(outside) == 1 && contents == secret;
}

bool leavesNoHiddenItem(const fs::path& destination) {
    return std::none_of(fs::directory_iterator(destination), fs::directory_iterator(),
                        [](const auto& entry) { return entry.path().filename().string().starts_with(".wickfield-"); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const fakes::TemporaryFolder place(quickPlace());
    const std::string archive = place / "a.zip";
    const fs::path room = place / "room";
    const fs::path destination = room / "a/b/out";
    const fs::path outside = place / "outside";
    fs::create_directories(destination.parent_path());
    fs::create_directory(outside);
    std::ofstream(outside / "file") << secret;
    FuzzedDataProvider input(bytes, size);
    const bool isThere = input.ConsumeBool();
    if (isThere) {
        fillDestination(destination, outside);
    }
    std::ofstream(archive, std::ios::binary) << anyArchive(input);

    constexpr std::uint64_t mostBytes = std::uint64_t{1} << 20U;
    std::size_t expected = 1;
    try {
        platform::linux_host::extractArchive(archive, destination, {.ratio = 1, .unsuspectedBytes = mostBytes});
    } catch (const platform::linux_host::ToolFailure&) {
        expected = isThere ? 1 : 0;
    }
    // Nothing beside the destination or above it, whatever paths the archive has.
    if (itemsIn(destination.parent_path()) != expected || itemsIn(room / "a") != 1 || itemsIn(room) != 1 ||
        itemsIn(place.path()) != 3 || !isUntouched(outside) || (isThere && !leavesNoHiddenItem(destination))) {
        std::abort();
    }
    using platform::linux_host::Removal;
    if (platform::linux_host::removeTree(room.string(), Removal::openingFolders)) {
        std::abort();
    }
    return 0;
}
