// The asynchronous task runner against what a program would write by hand: posix_spawn and a loop of 64 KiB reads that
// hands each piece to a function. Every byte is counted, and one of each piece is looked at.
//
//   async_bench [--megabytes N] [--rounds N]
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

#include "bench/Measure.h"
#include "lib/KZTaskEx.h"
#include "platform/linux/services/LinuxHost.h"

namespace {

constexpr double mostTime = 1 / 0.9;  // at least 0.9 of the throughput
constexpr const char* tool = "/usr/bin/head";

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "async_bench: %s failed\n", what);
    std::exit(1);
}

class Counter {
public:
    void count(std::string_view piece) {
        m_bytes += piece.size();
        m_zeroes += !piece.empty() && piece.back() == '\0' ? 1 : 0;
        m_pieces += piece.empty() ? 0 : 1;
    }
    void dataArrived(const std::string& data, KZTaskEx& /*task*/, const KZTaskEx::AsyncObject& /*object*/) {
        count(data);
        if (data.empty()) {
            const std::lock_guard lock(m_mutex);
            m_ended = true;
            m_changed.notify_all();
        }
    }
    void waitForTheEnd() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_ended; });
    }
    bool has(std::size_t bytes) const { return m_bytes == bytes && m_zeroes == m_pieces; }

private:
    std::size_t m_bytes = 0;
    std::size_t m_zeroes = 0;
    std::size_t m_pieces = 0;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_ended = false;
};

bool readByHand(const std::string& bytes) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        fail("pipe2");
    }
    std::string words[] = {tool, "-c", bytes, "/dev/zero"};
    char* const pointers[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data(), nullptr};
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    pid_t child = -1;
    if (::posix_spawn(&child, tool, &actions, nullptr, pointers, environ) != 0) {
        fail("posix_spawn");
    }
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    Counter counter;
    const std::function<void(std::string_view)> receive = [&counter](std::string_view piece) { counter.count(piece); };
    static char buffer[64 * 1024];
    for (ssize_t count = 0; (count = ::read(ends[0], buffer, sizeof buffer)) > 0;) {
        receive({buffer, static_cast<std::size_t>(count)});
    }
    ::close(ends[0]);
    return ::waitpid(child, nullptr, 0) == child && counter.has(std::strtoull(bytes.c_str(), nullptr, 10));
}

bool readByTheRunner(const std::string& bytes) {
    Counter counter;
    KZTaskEx task;
    task.asyncDataFromTask(tool, {"-c", bytes, "/dev/zero"}, &counter, &Counter::dataArrived, nullptr);
    counter.waitForTheEnd();
    return counter.has(std::strtoull(bytes.c_str(), nullptr, 10));
}

}  // namespace

int main(int count, char** arguments) {
    unsigned long megabytes = 1024;
    unsigned long rounds = 7;
    for (int at = 1; at + 1 < count; at += 2) {
        const std::string_view name = arguments[at];
        const auto value = std::strtoul(arguments[at + 1], nullptr, 10);
        if (value > 0 && name == "--megabytes") {
            megabytes = value;
        } else if (value > 0 && name == "--rounds") {
            rounds = value;
        } else {
            fail("reading the options");
        }
    }
    platform::setHost(platform::linux_host::services());
    const std::string bytes = std::to_string(megabytes << 20U);
    bench::Series byHand("64 KiB reads by hand");
    bench::Series runner("asyncDataFromTask");
    for (unsigned long round = 0; round < rounds; ++round) {
        byHand.run([&] { return readByHand(bytes); });
        runner.run([&] { return readByTheRunner(bytes); });
    }
    std::printf("%lu MiB of output in pieces\n", megabytes);
    byHand.print();
    runner.print();
    bench::printRatio("  asyncDataFromTask / by hand", runner.median(), byHand.median(), mostTime);
    return 0;
}
