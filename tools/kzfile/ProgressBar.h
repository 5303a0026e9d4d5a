// How far a long piece of work has come, on standard error.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>

namespace kzfile {

// Draws nothing but on a terminal. Any thread.
class ProgressBar {
public:
    enum class Wanted { no, yes };
    ProgressBar(std::string name, std::uint64_t total, Wanted wanted);  // bytes

    // Reports that were overtaken by later ones change nothing, and so do those after the end.
    void show(std::uint64_t done);
    void showWork(const std::string& work);  // that has no figures of its own

    // Leaves the bar, full, with the words behind it.
    void finish(const std::string& words);
    void takeAway();

private:
    void draw(const std::string& words);
    std::string figures() const;

    const std::string m_name;
    const std::uint64_t m_total;
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    std::mutex m_mutex;
    std::uint64_t m_done = 0;
    bool m_active;
};

}  // namespace kzfile
