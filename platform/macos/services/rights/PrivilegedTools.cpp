#include "platform/macos/services/rights/PrivilegedTools.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

#include "platform/posix/BlockedSignals.h"
#include "platform/posix/Pipe.h"
#include "platform/posix/Poll.h"

namespace platform::macos {

namespace {

using std::chrono::milliseconds;

// Children of this process's own group that have ended: the tools, whose numbers nobody knows.
void reapTools() {
    pid_t child = 0;
    do {
        child = ::waitpid(0, nullptr, WNOHANG);
    } while (child > 0 || (child < 0 && errno == EINTR));
}

// Looks again and again, ever more seldom: a tool's stream is closed a little before the tool has ended.
class Looks {
public:
    void begin() { m_interval = shortest; }
    bool areDue() const { return m_interval <= longest; }
    std::chrono::steady_clock::time_point next() const {
        return areDue() ? posix::deadlineAfter(m_interval) : std::chrono::steady_clock::time_point::max();
    }
    void look() {
        if (areDue()) {
            reapTools();
            m_interval *= 2;
        }
    }

private:
    static constexpr milliseconds shortest{1};
    static constexpr milliseconds longest{512};
    milliseconds m_interval = longest * 2;
};

}  // namespace

// Those that are open, used by the thread only.
class PrivilegedTools::Streams {
public:
    explicit Streams(int wake) : m_waited{{wake, POLLIN, 0}} {}
    ~Streams() {
        for (std::FILE* const stream : m_streams) {
            std::fclose(stream);
        }
    }
    Streams(const Streams&) = delete;
    Streams& operator=(const Streams&) = delete;

    void add(std::FILE* stream) {
        m_streams.push_back(stream);
        m_waited.push_back({::fileno(stream), POLLIN, 0});
    }

    void wait(std::chrono::steady_clock::time_point deadline) { posix::pollUntil(m_waited, deadline); }

    bool isWoken() const { return m_waited.front().revents != 0; }

    // How many have come to their end.
    std::size_t drop() {
        std::size_t ended = 0;
        for (std::size_t index = m_streams.size(); index-- > 0;) {
            if (m_waited[index + 1].revents != 0 && !dropSome(m_waited[index + 1].fd)) {
                std::fclose(m_streams[index]);
                m_streams.erase(m_streams.begin() + static_cast<std::ptrdiff_t>(index));
                m_waited.erase(m_waited.begin() + static_cast<std::ptrdiff_t>(index) + 1);
                ++ended;
            }
        }
        return ended;
    }

private:
    static bool dropSome(int descriptor) {
        char bytes[4096];
        const auto count = ::read(descriptor, bytes, sizeof bytes);
        return count > 0 || (count < 0 && (errno == EINTR || errno == EAGAIN));
    }

    std::vector<std::FILE*> m_streams;
    std::vector<pollfd> m_waited;  // the wake, then the streams in their order
};

PrivilegedTools::~PrivilegedTools() {
    {
        const std::lock_guard lock(m_mutex);
        m_closing = true;
        wakeThread();
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
    for (std::FILE* const stream : m_newcomers) {
        std::fclose(stream);
    }
}

bool PrivilegedTools::canReadAnother() {
    const std::lock_guard lock(m_mutex);
    return m_open < mostStreams && startThread();
}

void PrivilegedTools::readToEnd(std::FILE* stream) {
    const std::lock_guard lock(m_mutex);
    m_newcomers.push_back(stream);
    ++m_open;
    wakeThread();
}

void PrivilegedTools::noteEnd() {
    const std::lock_guard lock(m_mutex);
    if (!startThread()) {
        reapTools();
        return;
    }
    m_mayHaveEnded = true;
    wakeThread();
}

bool PrivilegedTools::startThread() {
    if (m_thread.joinable()) {
        return true;
    }
    auto pipe = posix::makePipe();
    if (!pipe) {
        return false;
    }
    m_wake = std::move(pipe->writeEnd);
    m_woken = std::move(pipe->readEnd);
    const posix::BlockedSignals blocked;
    try {
        m_thread = std::thread([this] { run(); });
    } catch (const std::system_error&) {
        m_wake.reset();
        m_woken.reset();
        return false;
    }
    return true;
}

void PrivilegedTools::wakeThread() {
    if (m_wake) {
        const char byte = 0;
        [[maybe_unused]] const auto written = ::write(m_wake.get(), &byte, 1);
    }
}

void PrivilegedTools::run() {
    Streams streams(m_woken.get());
    Looks looks;
    for (;;) {
        streams.wait(looks.next());
        looks.look();
        if (const auto ended = streams.drop(); ended > 0) {
            m_open -= ended;
            looks.begin();
        }
        if (!streams.isWoken()) {
            continue;
        }
        const std::lock_guard lock(m_mutex);
        char bytes[256];
        [[maybe_unused]] const auto dropped = ::read(m_woken.get(), bytes, sizeof bytes);
        if (m_closing) {
            return;
        }
        for (std::FILE* const stream : std::exchange(m_newcomers, {})) {
            streams.add(stream);
        }
        if (std::exchange(m_mayHaveEnded, false)) {
            looks.begin();
        }
    }
}

}  // namespace platform::macos
