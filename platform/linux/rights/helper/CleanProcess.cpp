#include "platform/linux/rights/helper/CleanProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace platform::rights {

namespace {

void setStandardStreams() {
    const int nowhere = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    if (nowhere < 0 || ::dup2(nowhere, STDOUT_FILENO) < 0 || ::dup2(nowhere, STDERR_FILENO) < 0) {
        std::abort();
    }
}

void setEnvironment() {
    ::clearenv();
    ::setenv("PATH", "/usr/sbin:/usr/bin:/sbin:/bin", 1);
    ::setenv("HOME", "/root", 1);
    ::setenv("USER", "root", 1);
    ::setenv("LOGNAME", "root", 1);
    ::setenv("LANG", "C.UTF-8", 1);
}

// Where even root may not go beyond a hard limit, as far as that.
void setLimit(__rlimit_resource_t resource, rlim_t soft, rlim_t hard) {
    const rlimit wanted{soft, hard};
    rlimit had{};
    if (::setrlimit(resource, &wanted) != 0 && ::getrlimit(resource, &had) == 0) {
        const rlimit possible{std::min(soft, had.rlim_max), had.rlim_max};
        ::setrlimit(resource, &possible);
    }
}

// A tool that is cut short by somebody else's limits leaves half a file.
void setLimits() {
    constexpr rlim_t descriptors = 1024;
    constexpr rlim_t mostDescriptors = 4096;
    constexpr rlim_t stack = rlim_t{8} << 20U;
    for (const auto resource : std::array{RLIMIT_AS, RLIMIT_CPU, RLIMIT_DATA, RLIMIT_FSIZE, RLIMIT_NPROC}) {
        setLimit(resource, RLIM_INFINITY, RLIM_INFINITY);
    }
    setLimit(RLIMIT_STACK, stack, RLIM_INFINITY);
    setLimit(RLIMIT_NOFILE, descriptors, mostDescriptors);
    setLimit(RLIMIT_CORE, 0, 0);
}

void setSignals() {
    for (int number = 1; number < NSIG; ++number) {
        ::signal(number, SIG_DFL);
    }
    ::signal(SIGPIPE, SIG_IGN);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

}  // namespace

void closeDescriptorsFrom(int first, RangeCloser closeRange) {
    if (closeRange(static_cast<unsigned>(first), ~0U, 0) == 0) {
        return;
    }
    // The folder's own descriptor is among the numbers, so they are collected before any is closed.
    std::vector<int> numbers;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        numbers.push_back(std::stoi(entry.path().filename().string()));
    }
    for (const int number : numbers) {
        if (number >= first) {
            ::close(number);
        }
    }
}

// The limits come first, as what follows needs a descriptor.
void cleanProcess() {
    setLimits();
    setStandardStreams();
    closeDescriptorsFrom(STDERR_FILENO + 1);
    setEnvironment();
    setSignals();
    ::umask(S_IWGRP | S_IWOTH);
    if (::chdir("/") != 0) {
        std::abort();
    }
    ::prctl(PR_SET_DUMPABLE, 0);
}

}  // namespace platform::rights
