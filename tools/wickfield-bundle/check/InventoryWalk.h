// One thread's part in taking an inventory.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/posix/Descriptor.h"
#include "tools/wickfield-bundle/check/Inventory.h"

namespace wickfield_bundle {

// What one walk found, with the places where what others found belongs in it.
struct InventoryPart {
    Inventory found;
    std::vector<std::pair<std::size_t, InventoryPart*>> others;  // each before the entry of this number
};

// Entries of an open folder that nobody has looked at yet.
struct FolderShare {
    platform::posix::Descriptor folder = {};
    platform::FileIdentity identity = {};
    std::string path = {};                // of the folder
    std::vector<std::string> names = {};  // in order
    InventoryPart* part = nullptr;        // where what is found goes
};

// Where threads that have nothing left to do get something from those that have. Any thread.
class FolderShares {
public:
    // Whether a thread waits for a share that none has given yet.
    bool areWanted() const { return m_wanted.load(std::memory_order_relaxed) > 0; }
    // For what is found in one more share; lives as long as this, whatever becomes of the thread that gives the share.
    InventoryPart& addPart();
    std::size_t countEntries() const;  // in all parts; when nobody looks any more
    void give(FolderShare share);
    // Calls back for one share after the other; waits for the next while another thread may still give some.
    void takeAll(const std::function<void(FolderShare)>& look);

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<InventoryPart> m_parts;
    std::vector<FolderShare> m_shares;
    std::atomic<int> m_wanted = 0;  // threads that wait, less the shares that lie ready
    int m_busy = 0;                 // threads that look at one
};

// The first share, which is all that lies in the folder `root`. Why there is none goes into the part.
void giveWhole(const std::string& root, FolderShares& shares, InventoryPart& part);

// Looks at all that is given, together with the other threads that call this. The process's first thread is the slowest
// at it, and any other may have another working folder afterwards.
void walkFolders(const std::string& root, FolderShares& shares);

}  // namespace wickfield_bundle
