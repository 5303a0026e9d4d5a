#include "platform/posix/ProcessStart.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace {

// Runs the check in a child process, so that this one keeps its streams and signals.
int statusOf(int (*check)()) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(check());
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    return status;
}

TEST(ProcessStart, GivesTheNumbersOfMissingStreamsToNothingElse) {
    EXPECT_EQ(statusOf([] {
                  ::close(STDIN_FILENO);
                  ::close(STDOUT_FILENO);
                  platform::posix::prepareProcess();
                  const int next = ::dup(STDERR_FILENO);
                  return next > STDERR_FILENO && ::write(STDOUT_FILENO, "x", 1) == 1 ? 0 : 1;
              }),
              0);
}

TEST(ProcessStart, LeavesStreamsAloneThatAreThere) {
    EXPECT_EQ(statusOf([] {
                  int pipe[2];
                  if (::pipe(pipe) != 0 || ::dup2(pipe[1], STDOUT_FILENO) < 0) {
                      return 1;
                  }
                  platform::posix::prepareProcess();
                  char read = 0;
                  return ::write(STDOUT_FILENO, "x", 1) == 1 && ::read(pipe[0], &read, 1) == 1 ? 0 : 1;
              }),
              0);
}

TEST(ProcessStart, OutlivesAFileThatIsLargerThanItMayWrite) {
    EXPECT_EQ(statusOf([] {
                  std::FILE* const file = std::tmpfile();
                  const rlimit limit{.rlim_cur = 1, .rlim_max = 1};
                  if (file == nullptr || ::setrlimit(RLIMIT_FSIZE, &limit) != 0) {
                      return 1;
                  }
                  platform::posix::prepareProcess();
                  return ::pwrite(::fileno(file), "x", 1, 1) == -1 && errno == EFBIG ? 0 : 2;
              }),
              0);
}

TEST(ProcessStart, OutlivesAReaderThatIsGone) {
    EXPECT_EQ(statusOf([] {
                  int pipe[2];
                  if (::pipe(pipe) != 0) {
                      return 1;
                  }
                  ::close(pipe[0]);
                  platform::posix::prepareProcess();
                  return ::write(pipe[1], "x", 1) == -1 ? 0 : 1;
              }),
              0);
}

}  // namespace
