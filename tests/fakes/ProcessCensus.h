#pragma once

#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

namespace fakes {

// What this process holds that a leak would make more of. Empty counts where the system does not show them.
struct ProcessCensus {
    std::size_t descriptors = 0;
    std::size_t threads = 0;
    std::size_t children = 0;  // running ones and zombies

    friend bool operator==(const ProcessCensus&, const ProcessCensus&) = default;

    static bool possible() { return std::filesystem::exists("/proc/self/fd"); }

    static ProcessCensus take() {
        // The thread sanitizer keeps a thread of its own from the first one that the program makes.
        [[maybe_unused]] static const bool threadsWereMade = [] {
            std::thread([] {}).join();
            return true;
        }();
        ProcessCensus census;
        census.descriptors = entriesOf("/proc/self/fd") - 1;  // without the one that reads the folder
        census.threads = entriesOf("/proc/self/task");
        census.children = countChildren();
        return census;
    }

    // Takes one until it is as expected; the last one when it never is. For what other threads are still letting go.
    static ProcessCensus takeUntil(const ProcessCensus& expected,
                                   std::chrono::milliseconds limit = std::chrono::seconds{5}) {
        const auto deadline = std::chrono::steady_clock::now() + limit;
        auto census = take();
        while (census != expected && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds{5});
            census = take();
        }
        return census;
    }

private:
    static std::size_t entriesOf(const char* folder) {
        std::size_t count = 0;
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder)) {
            ++count;
        }
        return count;
    }

    static std::size_t countChildren() {
        const auto self = std::to_string(::getpid());
        std::size_t count = 0;
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            std::ifstream file(entry.path() / "stat");
            std::string line;
            if (std::getline(file, line) && line.rfind(')') != std::string::npos) {
                std::istringstream fields(line.substr(line.rfind(')') + 1));
                std::string state;
                std::string parent;
                fields >> state >> parent;
                count += parent == self ? 1 : 0;
            }
        }
        return count;
    }
};

inline std::ostream& operator<<(std::ostream& stream, const ProcessCensus& census) {
    return stream << census.descriptors << " descriptors, " << census.threads << " threads, " << census.children
                  << " children";
}

}  // namespace fakes
