#pragma once

#include <thread>
#include <utility>

namespace fakes {

// A thread that is waited for at the end of its scope.
class JoiningThread {
public:
    template <typename Work>
    explicit JoiningThread(Work work) : m_thread(std::move(work)) {}
    ~JoiningThread() { join(); }
    JoiningThread(JoiningThread&&) noexcept = default;
    JoiningThread& operator=(JoiningThread&&) = delete;

    void join() {
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }

private:
    std::thread m_thread;
};

}  // namespace fakes
