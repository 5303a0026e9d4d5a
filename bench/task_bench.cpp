// The task runner against what a program would write by hand: posix_spawn and waitpid for runs, a loop of 64 KiB reads
// appended to a string for captures.
//
//   task_bench [--runs N] [--megabytes N] [--rounds N]
#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "bench/Measure.h"
#include "lib/KZTaskEx.h"
#include "platform/linux/services/LinuxHost.h"
#include "platform/posix/ArgumentPointers.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Options {
    int runs = 1500;
    std::size_t megabytes = 1024;
    int rounds = 5;
};

constexpr KZTaskEx::Seconds minute{60.0};
constexpr double mostTimeForARun = 1 / 0.95;  // at least 0.95 of the rate

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "task_bench: %s failed\n", what);
    std::exit(1);
}

pid_t spawnByHand(const char* tool, const std::vector<std::string>& arguments, int output) {
    std::vector<std::string> texts{tool};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    const auto pointers = platform::posix::pointersTo(texts);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    if (output >= 0) {
        ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    }
    pid_t child = -1;
    if (::posix_spawn(&child, tool, &actions, nullptr, pointers.data(), environ) != 0) {
        fail("posix_spawn");
    }
    ::posix_spawn_file_actions_destroy(&actions);
    return child;
}

void waitByHand(pid_t child) {
    if (::waitpid(child, nullptr, 0) != child) {
        fail("waitpid");
    }
}

void runByHand() { waitByHand(spawnByHand("/bin/true", {}, -1)); }

std::size_t captureByHand(const std::string& bytes) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        fail("pipe2");
    }
    const pid_t child = spawnByHand("/usr/bin/head", {"-c", bytes, "/dev/zero"}, ends[1]);
    ::close(ends[1]);
    std::string data;
    static char buffer[64 * 1024];
    for (ssize_t count = 0; (count = ::read(ends[0], buffer, sizeof buffer)) > 0;) {
        data.append(buffer, static_cast<std::size_t>(count));
    }
    ::close(ends[0]);
    waitByHand(child);
    return data.size();
}

struct Contender {
    std::string name;
    std::function<void()> work;
    std::vector<double> microseconds{};
};

// Single runs take turns, so that whatever else the machine does falls on all alike; the first is what the others are
// measured against.
void compareRuns(const char* title, int runs, std::vector<Contender> contenders) {
    for (int run = 0; run < runs; ++run) {
        for (auto& contender : contenders) {
            const auto start = Clock::now();
            contender.work();
            contender.microseconds.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
        }
    }
    std::printf("%s, median of %d\n", title, runs);
    std::vector<double> medians;
    for (auto& contender : contenders) {
        std::sort(contender.microseconds.begin(), contender.microseconds.end());
        medians.push_back(contender.microseconds[contender.microseconds.size() / 2]);
        std::printf("  %-44s %8.1f us\n", contender.name.c_str(), medians.back());
        if (medians.size() > 1) {
            bench::printRatio(("  " + contender.name + " / by hand").c_str(), medians.back(), medians.front(),
                              mostTimeForARun);
        }
    }
}

void compareRuns(int runs) {
    const Contender byHand{"by hand", runByHand};
    const Contender plain{"runTask", [] { KZTaskEx::runTask("/bin/true", {}); }};
    const Contender timed{"terminationCodeFromTask, 60 s time-out",
                          [] { KZTaskEx::terminationCodeFromTask("/bin/true", {}, minute); }};
    compareRuns("/bin/true from the main thread", runs, {byHand, plain, timed});
    std::thread([&] { compareRuns("/bin/true from another thread", runs, {byHand, plain, timed}); }).join();
}

void compareCaptures(std::size_t megabytes, int rounds) {
    const std::size_t bytes = megabytes << 20U;
    const std::string count = std::to_string(bytes);
    const KZTaskEx::Arguments arguments{"-c", count, "/dev/zero"};
    bench::Series byHand("64 KiB reads by hand");
    bench::Series plain("dataFromTask");
    bench::Series timed("dataFromTask, 60 s time-out, main thread");
    for (int round = 0; round < rounds; ++round) {
        byHand.run([&] { return captureByHand(count) == bytes; });
        plain.run([&] { return KZTaskEx::dataFromTask("/usr/bin/head", arguments, nullptr)->size() == bytes; });
        timed.run([&] { return KZTaskEx::dataFromTask("/usr/bin/head", arguments, minute)->size() == bytes; });
    }
    std::printf("a capture of %zu MiB\n", megabytes);
    for (const auto* series : {&byHand, &plain, &timed}) {
        series->print();
    }
    bench::printRatio("  dataFromTask / by hand", plain.median(), byHand.median(), 1.0);
    bench::printRatio("  dataFromTask with a time-out / by hand", timed.median(), byHand.median(), 1.0);
}

}  // namespace

int main(int count, char** arguments) {
    Options options;
    for (int at = 1; at + 1 < count; at += 2) {
        const std::string name = arguments[at];
        const int value = std::atoi(arguments[at + 1]);  // NOLINT(cert-err34-c): checked below
        if (value > 0 && name == "--runs") {
            options.runs = value;
        } else if (value > 0 && name == "--megabytes") {
            options.megabytes = static_cast<std::size_t>(value);
        } else if (value > 0 && name == "--rounds") {
            options.rounds = value;
        } else {
            fail("reading the options");
        }
    }
    platform::setHost(platform::linux_host::services());
    // Before the first thread: the captures run in children of their own.
    compareCaptures(options.megabytes, options.rounds);
    compareRuns(options.runs);
    return 0;
}
