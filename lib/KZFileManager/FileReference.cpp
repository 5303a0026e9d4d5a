#include "lib/KZFileManager/FileReference.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <mutex>
#include <type_traits>
#include <unordered_map>
#include <utility>

#include "platform/ports/Host.h"

namespace {

constexpr std::int32_t badParameter = -50;
constexpr std::int32_t fileNotFound = -43;

// What the opaque bytes hold.
struct Contents {
    std::uint64_t tag = 0;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t path = 0;  // the path's number in the table
};
static_assert(sizeof(Contents) <= sizeof(FSRef::hidden) && std::is_trivially_copyable_v<Contents>);

constexpr std::uint64_t contentsTag = 0x57494b4652454601;

// The paths of the references, each once, numbered from 1 without ever using a number again. The oldest goes when the
// table is full, so that a long run does not grow.
class PathTable {
public:
    std::uint64_t numberOf(const std::string& path) {
        const std::lock_guard lock(m_mutex);
        if (const auto known = m_numbers.find(path); known != m_numbers.end()) {
            return known->second;
        }
        if (m_paths.size() == capacity) {
            m_numbers.erase(m_paths.front());
            m_paths.pop_front();
            ++m_first;
        }
        m_paths.push_back(path);
        const std::uint64_t number = m_first + m_paths.size() - 1;
        m_numbers.emplace(path, number);
        return number;
    }

    std::optional<std::string> path(std::uint64_t number) const {
        const std::lock_guard lock(m_mutex);
        if (number < m_first || number - m_first >= m_paths.size()) {
            return {};
        }
        return m_paths[number - m_first];
    }

private:
    static constexpr std::size_t capacity = 4096;

    mutable std::mutex m_mutex;
    std::deque<std::string> m_paths;
    std::unordered_map<std::string, std::uint64_t> m_numbers;
    std::uint64_t m_first = 1;  // the number of the front
};

PathTable& pathTable() {
    static PathTable table;
    return table;
}

bool isAllZero(const FSRef& ref) {
    return std::ranges::all_of(ref.hidden, [](unsigned char byte) { return byte == 0; });
}

}  // namespace

std::int32_t SendFinderSyncEvent(const FSRef* ref) {
    if (ref == nullptr) {
        return badParameter;
    }
    if (isAllZero(*ref)) {
        return platform::host().workspace->sendFinderUpdate({});
    }
    const auto path = KZFileManager::stringWithFSRef(ref);
    return path ? platform::host().workspace->sendFinderUpdate(path) : fileNotFound;
}

namespace KZFileManager {

void notifyFileSystemChanged(const std::optional<std::string>& path) {
    const FSRef ref = path ? stringToFSRef(*path) : FSRef{};
    SendFinderSyncEvent(&ref);
}

FSRef stringToFSRef(const std::string& path) {
    Contents contents{.tag = contentsTag};
    if (const auto identity = platform::host().files->identity(path)) {
        contents.device = identity->device;
        contents.inode = identity->inode;
        contents.path = pathTable().numberOf(path);
    }
    FSRef ref;
    std::memcpy(ref.hidden.data(), &contents, sizeof contents);
    return ref;
}

std::optional<std::string> stringWithFSRef(const FSRef* ref) {
    if (ref == nullptr) {
        return {};
    }
    Contents contents;
    std::memcpy(&contents, ref->hidden.data(), sizeof contents);
    if (contents.tag != contentsTag) {
        return {};
    }
    auto path = pathTable().path(contents.path);
    const platform::FileIdentity meant{.device = contents.device, .inode = contents.inode};
    if (path && platform::host().files->identity(*path) != meant) {
        path.reset();  // another item has taken its place, or none
    }
    return path;
}

}  // namespace KZFileManager
