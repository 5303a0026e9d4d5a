// Work for a later time.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <tuple>

namespace kz {

// One thread serves all of them, however many wait; it is started by the first. Any thread.
class Timers {
public:
    using Clock = std::chrono::steady_clock;

    struct Token {
        Clock::time_point time;
        std::uint64_t number = 0;
        friend bool operator<(const Token& left, const Token& right) {
            return std::tie(left.time, left.number) < std::tie(right.time, right.number);
        }
    };

    static Timers& shared();  // never destroyed

    // The work runs on the timers' thread, in the order of the times. It must return soon, must not throw and must
    // neither add nor cancel.
    Token add(Clock::time_point time, std::function<void()> work);

    // When it returns, the work has been done or never will be.
    void cancel(const Token& token);

    std::size_t waiting() const;

    Timers(const Timers&) = delete;
    Timers& operator=(const Timers&) = delete;

private:
    Timers() = default;
    void startThread();
    void run();

    mutable std::mutex m_mutex;
    std::condition_variable m_earlier;
    std::map<Token, std::function<void()>> m_work;
    std::uint64_t m_number = 0;
    Clock::time_point m_wakesAt = Clock::time_point::max();
    bool m_running = false;
};

}  // namespace kz
