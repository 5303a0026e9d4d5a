// How many entries a second the log takes and writes, against spdlog's asynchronous logger with its blocking policy to
// a basic file, same message and same line, both drained. The log's own roll-over and its header are part of its time.
//
//     log_bench [entries] [rounds]
#include <spdlog/async.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/basic_file_sink.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench/Measure.h"
#include "lib/KZLog.h"
#include "platform/linux/services/LinuxHost.h"
#include "tests/fakes/FakeIdentity.h"
#include "tests/fakes/FakeMainBundle.h"
#include "tests/fakes/FakeStandardFolders.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

constexpr std::size_t spdlogQueue = 8192;
const std::string destination = "/Library/Audio/Plug-Ins/VST3/Sample.vst3/Contents/Resources";

template <typename Entry>
void fromThreads(int threads, int entries, const Entry& entry) {
    std::vector<std::thread> running;
    for (int thread = 0; thread < threads; ++thread) {
        running.emplace_back([&entry, thread, count = entries / threads] {
            for (int number = 0; number < count; ++number) {
                entry(number, thread);
            }
        });
    }
    for (std::thread& thread : running) {
        thread.join();
    }
}

bool runKZLog(int threads, int entries) {
    const fakes::TemporaryFolder disk;
    fakes::FakeStandardFolders folders;
    fakes::FakeIdentity identity;
    fakes::FakeMainBundle bundle;
    folders.paths[{platform::FolderKind::library, platform::FolderDomain::user}] = {disk / "Library"};
    platform::Host host = platform::linux_host::services();
    host.folders = &folders;
    host.identity = &identity;
    host.bundle = &bundle;
    const platform::ScopedHost scope(host);
    KZLog::createNewLog("Bench");
    fromThreads(threads, entries, [](int number, int thread) {
        KZLog::fastAppendLog("File %i of thread %i copied to %@", number, thread, destination);
    });
    KZLog::finishWriting();
    const bool written = std::filesystem::file_size(disk / "Library/Logs/Corvane/Bench.1.log") > 0;
    KZLog::willTerminate();
    return written;
}

bool runSpdlog(int threads, int entries) {
    const fakes::TemporaryFolder disk;
    const auto pool = std::make_shared<spdlog::details::thread_pool>(spdlogQueue, 1);
    auto sink = std::make_shared<spdlog::sinks::basic_file_sink_mt>(disk / "bench.log");
    auto logger =
        std::make_shared<spdlog::async_logger>("bench", std::move(sink), pool, spdlog::async_overflow_policy::block);
    logger->set_formatter(
        std::make_unique<spdlog::pattern_formatter>("%Y-%m-%d %H:%M:%S +0000 - %v", spdlog::pattern_time_type::utc));
    fromThreads(threads, entries, [&](int number, int thread) {
        logger->info("File {} of thread {} copied to {}", number, thread, destination);
    });
    logger->flush();
    while (pool->queue_size() > 0) {
        std::this_thread::yield();
    }
    return true;
}

void compare(int threads, int entries, int rounds) {
    bench::Series ours("KZLog");
    bench::Series theirs("spdlog");
    for (int round = 0; round < rounds; ++round) {
        ours.run([&] { return runKZLog(threads, entries); });
        theirs.run([&] { return runSpdlog(threads, entries); });
    }
    std::printf("%d thread%s: fastAppendLog %.2f, spdlog %.2f million entries/s, ratio %.2f (goal: at least 1)\n",
                threads, threads == 1 ? "" : "s", entries / ours.median() / 1e6, entries / theirs.median() / 1e6,
                theirs.median() / ours.median());
    std::printf("           peak memory %ld and %ld KiB\n", ours.peakKilobytes(), theirs.peakKilobytes());
}

}  // namespace

int main(int argc, char** argv) {
    const int entries = argc > 1 ? std::atoi(argv[1]) : 1000000;
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 5;
    if (entries <= 0 || rounds <= 0) {
        std::fprintf(stderr, "usage: log_bench [entries] [rounds]\n");
        return 2;
    }
    compare(1, entries, rounds);
    compare(4, entries, rounds);
    return 0;
}
