#include <algorithm>
#include <condition_variable>
#include <iterator>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "lib/KZFileManager/Queries.h"
#include "lib/base/PathText.h"
#include "platform/ports/Host.h"

namespace {

using platform::FileType;

// The folders from the top of the walk down to one of them, shared by all that lies below.
struct Trail {
    platform::FileIdentity folder;
    std::shared_ptr<const Trail> above;
};

struct Folder {
    std::string path;
    std::shared_ptr<const Trail> above;
};

bool leadsThrough(const Trail* trail, const platform::FileIdentity& folder) {
    while (trail != nullptr && trail->folder != folder) {
        trail = trail->above.get();
    }
    return trail != nullptr;
}

// Adds up a tree, large ones with the help of a second thread: nearly all of the time goes into calls on the system.
class SizeWalk {
public:
    std::uint64_t sizeOf(const std::string& folder) {
        m_pending.push_back({.path = folder, .above = nullptr});
        work();
        if (m_helper.joinable()) {
            m_helper.join();
        }
        return m_sum;
    }

private:
    struct Found {
        std::uint64_t bytes = 0;
        std::vector<Folder> subfolders;
    };

    // An unreadable folder, and one that lies within itself, holds nothing.
    static Found look(const Folder& folder) {
        auto& files = *platform::host().files;
        const auto identity = files.identity(folder.path);
        if (!identity || leadsThrough(folder.above.get(), *identity)) {
            return {};
        }
        const auto trail = std::make_shared<const Trail>(Trail{.folder = *identity, .above = folder.above});
        Found found;
        const bool listed = files.visitDirectory(folder.path, platform::VisitSizes::yes, [&](const auto& entry) {
            if (entry.type != FileType::regular && entry.type != FileType::other) {
                std::string path = kz::appendPathComponent(folder.path, entry.name);
                if (entry.type == FileType::folder || files.isFolder(path)) {
                    found.subfolders.push_back({.path = std::move(path), .above = trail});
                    return;
                }
            }
            found.bytes += entry.size;
        });
        return listed ? std::move(found) : Found{};
    }

    // Takes folders until none is left and nobody is looking into one.
    void work() noexcept {
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_changed.wait(lock, [&] { return !m_pending.empty() || m_looking == 0; });
            if (m_pending.empty()) {
                return;
            }
            const Folder folder = std::move(m_pending.back());
            m_pending.pop_back();
            ++m_looking;
            lock.unlock();
            auto found = look(folder);
            lock.lock();
            --m_looking;
            m_sum += found.bytes;
            std::ranges::move(found.subfolders, std::back_inserter(m_pending));
            callForHelp();
            m_changed.notify_all();
        }
    }

    void callForHelp() {
        constexpr int worthwhile = 32;  // folders
        if (++m_looked != worthwhile || m_pending.size() < 2 || platform::host().system->processorCount() < 2) {
            return;
        }
        try {
            m_helper = std::thread([this] { work(); });
        } catch (const std::system_error&) {  // then without
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Folder> m_pending;
    int m_looking = 0;
    int m_looked = 0;
    std::uint64_t m_sum = 0;
    std::thread m_helper;
};

}  // namespace

namespace KZFileManager {

std::uint64_t fileSize(const std::string& path) {
    if (isDirectoryAtPath(path)) {
        return SizeWalk().sizeOf(path);
    }
    const auto attributes = platform::host().files->attributes(path);
    return attributes ? attributes->size : 0;
}

}  // namespace KZFileManager
