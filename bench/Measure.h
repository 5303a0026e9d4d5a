// Timing of whole pieces of work, each in a child process of its own, and ratios of their medians.
#pragma once

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace bench {

struct Sample {
    double seconds = 0;
    long peakKilobytes = 0;
};

// Runs the work in a child process, so that its memory and its threads are its own; ends the program when it fails.
template <typename Work>
Sample inChild(const char* name, const Work& work) {
    std::fflush(nullptr);
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = ::fork();
    if (child == 0) {
        const bool done = work();
        std::fflush(nullptr);
        ::_exit(done ? 0 : 1);
    }
    int status = 0;
    rusage usage{};
    if (child < 0 || ::wait4(child, &status, 0, &usage) != child || status != 0) {
        std::fprintf(stderr, "%s failed\n", name);
        std::exit(1);
    }
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    return {elapsed.count(), usage.ru_maxrss};
}

class Series {
public:
    explicit Series(std::string name) : m_name(std::move(name)) {}

    template <typename Work>
    void run(const Work& work) {
        const auto sample = inChild(m_name.c_str(), work);
        m_seconds.push_back(sample.seconds);
        m_peak = std::max(m_peak, sample.peakKilobytes);
    }

    double median() const {
        auto sorted = m_seconds;
        std::sort(sorted.begin(), sorted.end());
        return sorted.empty() ? 0 : sorted[sorted.size() / 2];
    }
    long peakKilobytes() const { return m_peak; }

    void print() const {
        const auto [least, most] = std::minmax_element(m_seconds.begin(), m_seconds.end());
        std::printf("  %-44s %8.3f s  (%.3f to %.3f, %zu rounds, peak %ld KB)\n", m_name.c_str(), median(), *least,
                    *most, m_seconds.size(), m_peak);
    }

private:
    std::string m_name;
    std::vector<double> m_seconds;
    long m_peak = 0;
};

inline void printRatio(const char* what, double value, double reference, double goal) {
    const double ratio = reference > 0 ? value / reference : 0;
    std::printf("%-64s %.2f  (goal: at most %.2f, %s)\n", what, ratio, goal, ratio <= goal ? "met" : "MISSED");
}

}  // namespace bench
