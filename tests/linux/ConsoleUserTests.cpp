#include "platform/linux/services/ConsoleUser.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>

#include "platform/linux/services/Accounts.h"

namespace {

// Two accounts that every system has.
constexpr uid_t daemonAccount = 1;
constexpr uid_t binAccount = 2;
std::string nameOf(uid_t uid) { return platform::linux_host::accountOf(uid)->name; }

constexpr int cannotIsolate = 77;

bool writeFile(const std::string& path, const std::string& text) {
    std::ofstream file(path);
    file << text;
    return static_cast<bool>(file.flush());
}

bool becomeSuperuserOfANamespace() {
    const auto uid = std::to_string(::getuid());
    const auto gid = std::to_string(::getgid());
    return ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && writeFile("/proc/self/uid_map", "0 " + uid + " 1") &&
           writeFile("/proc/self/setgroups", "deny") && writeFile("/proc/self/gid_map", "0 " + gid + " 1");
}

// A /run of this process's own.
bool isolateRun() {
    const bool isolated = ::getuid() == 0 ? ::unshare(CLONE_NEWNS) == 0 : becomeSuperuserOfANamespace();
    return isolated && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", "/run", "tmpfs", 0, nullptr) == 0;
}

// What the login manager of this test knows.
class LoginManager {
public:
    LoginManager() {
        for (const char* folder : {"seats", "sessions", "users"}) {
            std::filesystem::create_directories(std::string("/run/systemd/") + folder);
        }
    }
    void seat(const std::string& name, const std::string& activeSession, uid_t uid) const {
        writeFile("/run/systemd/seats/" + name, "ACTIVE=" + activeSession + "\nACTIVE_UID=" + std::to_string(uid) +
                                                    "\nSESSIONS=" + activeSession + "\n");
    }
    void emptySeat(const std::string& name) const { writeFile("/run/systemd/seats/" + name, "IS_SEAT0=1\n"); }
    struct Session {
        uid_t uid = daemonAccount;
        std::string kind = "user";
        bool active = true;
        std::string seat = "seat0";
    };
    void session(const std::string& name, const Session& session) const {
        writeFile("/run/systemd/sessions/" + name,
                  "UID=" + std::to_string(session.uid) + "\nACTIVE=" + (session.active ? "1" : "0") +
                      "\nSTATE=" + (session.active ? "active" : "online") + "\nCLASS=" + session.kind + "\nTYPE=x11\n" +
                      (session.seat.empty() ? "" : "SEAT=" + session.seat + "\n"));
    }
};

bool answerConsoleUser(const std::function<void(const LoginManager&)>& prepare, int output) {
    try {
        ::unsetenv("SUDO_UID");
        ::unsetenv("PKEXEC_UID");
        prepare(LoginManager());
        const auto answer = platform::linux_host::consoleUser().value_or("none");
        return ::write(output, answer.data(), answer.size()) == std::ssize(answer);
    } catch (const std::exception&) {
        return false;  // a child must not go on as a second run of the tests
    }
}

// The answer in a process of its own; "none" for none, "skip" where the machine does not let us isolate one.
std::string consoleUserWith(const std::function<void(const LoginManager&)>& prepare) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) {
        return "no pipe";
    }
    const pid_t child = ::fork();
    if (child == 0) {
        if (!isolateRun()) {
            ::_exit(cannotIsolate);
        }
        ::_exit(answerConsoleUser(prepare, ends[1]) ? 0 : 1);
    }
    ::close(ends[1]);
    std::array<char, 256> answer{};
    const auto length = ::read(ends[0], answer.data(), answer.size());
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == cannotIsolate) {
        return "skip";
    }
    return status == 0 && length > 0 ? std::string(answer.data(), static_cast<std::size_t>(length)) : "failed";
}

class ConsoleUser : public testing::Test {
protected:
    void SetUp() override {
        if (consoleUserWith([](const LoginManager&) {}) == "skip") {
            GTEST_SKIP() << "this machine allows no private mount namespace";
        }
    }
};

TEST_F(ConsoleUser, IsTheUserOfTheFirstSeatsActiveSession) {
    EXPECT_EQ(consoleUserWith([](const LoginManager& logins) {
                  logins.seat("seat0", "2", binAccount);
                  logins.session("2", {.uid = binAccount});
                  logins.session("3", {.uid = daemonAccount, .active = false});
              }),
              nameOf(binAccount));
}

TEST_F(ConsoleUser, IsTheLoginWindowWhileAGreeterOrLockScreenIsThere) {
    for (const char* kind : {"greeter", "lock-screen"}) {
        EXPECT_EQ(consoleUserWith([&](const LoginManager& logins) {
                      logins.seat("seat0", "c1", daemonAccount);
                      logins.session("c1", {.kind = kind});
                      logins.session("2", {.uid = binAccount, .active = false});
                  }),
                  "loginwindow")
            << kind;
    }
}

TEST_F(ConsoleUser, IsTheUserOfAnotherSeatWhenNobodyIsAtTheFirst) {
    EXPECT_EQ(consoleUserWith([](const LoginManager& logins) {
                  logins.emptySeat("seat0");
                  logins.seat("seat1", "5", binAccount);
                  logins.session("5", {.uid = binAccount, .seat = "seat1"});
              }),
              nameOf(binAccount));
}

TEST_F(ConsoleUser, IsNotTheUserOfASessionWithoutASeat) {
    EXPECT_EQ(consoleUserWith([](const LoginManager& logins) { logins.session("7", {.uid = binAccount, .seat = ""}); }),
              "none");
}

TEST_F(ConsoleUser, IsNotTheUserOfABackgroundSession) {
    EXPECT_EQ(consoleUserWith([](const LoginManager& logins) {
                  logins.seat("seat0", "2", binAccount);
                  logins.session("2", {.uid = binAccount, .kind = "background"});
              }),
              "none");
}

TEST_F(ConsoleUser, IsNobodyOnAMachineWithoutALoginManager) {
    EXPECT_EQ(consoleUserWith([](const LoginManager&) { std::filesystem::remove_all("/run/systemd"); }), "none");
}

TEST_F(ConsoleUser, IsNobodyWhenTheAccountIsGone) {
    EXPECT_EQ(consoleUserWith([](const LoginManager& logins) {
                  logins.seat("seat0", "2", 3999999999);
                  logins.session("2", {.uid = 3999999999});
              }),
              "none");
}

TEST_F(ConsoleUser, IsWhoAskedForTheSuperusersRights) {
    for (const char* variable : {"SUDO_UID", "PKEXEC_UID"}) {
        EXPECT_EQ(consoleUserWith([&](const LoginManager&) { ::setenv(variable, "2", 1); }), nameOf(binAccount))
            << variable;
    }
}

TEST_F(ConsoleUser, IsWhoSitsThereBeforeWhoAskedForTheSuperusersRights) {
    EXPECT_EQ(consoleUserWith([](const LoginManager& logins) {
                  ::setenv("SUDO_UID", "1", 1);
                  logins.seat("seat0", "2", binAccount);
                  logins.session("2", {.uid = binAccount});
              }),
              nameOf(binAccount));
}

TEST_F(ConsoleUser, IsWhoCameInOverTheNetworkAndAskedWhileOnlyAGreeterIsThere) {
    for (const char* kind : {"greeter", "lock-screen"}) {
        EXPECT_EQ(consoleUserWith([&](const LoginManager& logins) {
                      ::setenv("SUDO_UID", "2", 1);
                      logins.seat("seat0", "c1", daemonAccount);
                      logins.session("c1", {.kind = kind});
                      logins.session("7", {.uid = binAccount, .seat = ""});
                  }),
                  nameOf(binAccount))
            << kind;
    }
}

TEST_F(ConsoleUser, IsNotWhoSitsAtAnotherSeatWhileTheFirstShowsAGreeter) {
    const auto prepare = [](const LoginManager& logins) {
        logins.seat("seat0", "c1", daemonAccount);
        logins.session("c1", {.kind = "greeter"});
        logins.seat("seat1", "5", binAccount);
        logins.session("5", {.uid = binAccount, .seat = "seat1"});
    };
    EXPECT_EQ(consoleUserWith(prepare), "loginwindow");
    EXPECT_EQ(consoleUserWith([&](const LoginManager& logins) {
                  ::setenv("SUDO_UID", "1", 1);
                  prepare(logins);
              }),
              nameOf(daemonAccount));
}

TEST_F(ConsoleUser, IsNeverTheSuperuserForHavingAskedHimselfNorATextThatIsNoNumber) {
    for (const char* value : {"0", "", "-1", "1x", "99999999999999999999", " 1"}) {
        EXPECT_EQ(consoleUserWith([&](const LoginManager&) { ::setenv("SUDO_UID", value, 1); }), "none") << value;
    }
}

TEST_F(ConsoleUser, IsNotReadFromTheEnvironmentOfAnOrdinaryUser) {
    if (::getuid() != 0) {
        GTEST_SKIP() << "needs to run as the superuser to become another user beside a private /run";
    }
    EXPECT_EQ(consoleUserWith([](const LoginManager&) {
                  ::setenv("SUDO_UID", "2", 1);
                  if (::setuid(daemonAccount) != 0) {
                      ::_exit(1);
                  }
              }),
              "none");
}

}  // namespace
