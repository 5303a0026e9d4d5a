// Privileged commands in an open session against the same tools started by root itself: posix_spawn and waitpid.
//
//   rights_bench [--runs N]
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "bench/Measure.h"
#include "platform/linux/rights/HelperImage.h"
#include "platform/linux/rights/HelperLaunch.h"
#include "platform/linux/rights/RightsSession.h"
#include "platform/posix/ArgumentPointers.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

using Clock = std::chrono::steady_clock;
using platform::rights::HelperLaunch;
using platform::rights::RightsSession;

constexpr double mostTime = 1.3;
constexpr uid_t somebody = 23451;

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "rights_bench: %s failed\n", what);
    std::exit(1);
}

void runByHand(const std::vector<std::string>& command) {
    const auto pointers = platform::posix::pointersTo(command);
    pid_t child = -1;
    if (::posix_spawn(&child, pointers[0], nullptr, nullptr, pointers.data(), environ) != 0 ||
        ::waitpid(child, nullptr, 0) != child) {
        fail("posix_spawn");
    }
}

std::unique_ptr<RightsSession> openSession() {
    const platform::rights::HelperImage image;
    auto started = HelperLaunch::start({image.path()});
    auto* const launch = std::get_if<HelperLaunch>(&started);
    if (launch == nullptr) {
        fail("starting the helper");
    }
    pollfd hello{launch->socket(), POLLIN, 0};
    if (::poll(&hello, 1, 10000) != 1 || launch->progress() != HelperLaunch::Progress::running) {
        fail("waiting for the helper");
    }
    return launch->takeSession();
}

struct Work {
    std::string name;
    std::vector<std::string> command;
    bool waits;
};

// They take turns, so that whatever else the machine does falls on both alike.
void compare(RightsSession& session, int runs, const Work& work) {
    const std::vector<std::string> arguments(work.command.begin() + 1, work.command.end());
    std::vector<double> byHand;
    std::vector<double> inSession;
    const auto timed = [](std::vector<double>& times, const auto& run) {
        const auto start = Clock::now();
        run();
        times.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
    };
    for (int i = 0; i < runs; ++i) {
        timed(byHand, [&] { runByHand(work.command); });
        timed(inSession, [&] {
            if (session.run(work.command.front(), arguments, work.waits) != 0) {
                fail(work.name.c_str());
            }
        });
    }
    const auto median = [](std::vector<double>& times) {
        std::sort(times.begin(), times.end());
        return times[times.size() / 2];
    };
    const double reference = median(byHand);
    const double privileged = median(inSession);
    std::printf("%s, median of %d: by hand %.0f us, in a session %.0f us\n", work.name.c_str(), runs, reference,
                privileged);
    bench::printRatio("  in a session / by hand", privileged, reference, mostTime);
}

void measure(int runs) {
    // Nobody but root can write on the way to it.
    const fakes::TemporaryFolder roots("/var/lib");
    const fakes::TemporaryFolder users;
    std::filesystem::create_directory(roots / "tree");
    for (int i = 0; i < 8; ++i) {
        std::ofstream(roots / ("tree/" + std::to_string(i))) << std::string(1000, 'x');
    }
    std::ofstream(roots / "file") << std::string(100000, 'x');
    std::ofstream(users / "file") << std::string(100000, 'x');
    if (::chown(users.path().c_str(), somebody, somebody) != 0) {
        fail("chown");
    }
    const auto session = openSession();
    const std::vector<std::string> copy{"/bin/cp", "-f", "-p", "-R"};
    const auto copyOf = [&](const std::string& from, const std::string& to) {
        auto command = copy;
        command.insert(command.end(), {from, to});
        return command;
    };
    for (const auto& work : {
             Work{"/bin/true, waited for", {"/bin/true"}, true},
             Work{"/usr/bin/touch -c, waited for", {"/usr/bin/touch", "-c", roots / "file"}, true},
             Work{"/usr/bin/touch -c in a user's folder, waited for", {"/usr/bin/touch", "-c", users / "file"}, true},
             Work{"/bin/cp of a file", copyOf(roots / "file", roots / "copy"), false},
             Work{"/bin/cp of a user's file", copyOf(users / "file", roots / "copy"), false},
             Work{"/bin/cp of a file into a user's folder", copyOf(roots / "file", users / "copy"), false},
             Work{"/bin/cp of a folder of 8 files", copyOf(roots / "tree", roots / "copies"), false},
         }) {
        compare(*session, runs, work);
    }
}

}  // namespace

int main(int count, char** arguments) {
    int runs = 1000;
    if (count == 3 && std::string(arguments[1]) == "--runs") {
        runs = std::atoi(arguments[2]);  // NOLINT(cert-err34-c): checked below
    }
    if (runs <= 0) {
        fail("reading the options");
    }
    if (::geteuid() != 0) {
        std::printf("rights_bench: skipped, only the superuser can start the helper without asking\n");
        return 0;
    }
    measure(runs);
    return 0;
}
