// What is asked of Authorization Services, which are pretended here.
#include "platform/macos/services/rights/MacAuthorization.h"

#include <Security/Authorization.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "platform/posix/Descriptor.h"
#include "platform/posix/ExitWatch.h"
#include "platform/posix/ProcessLauncher.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

using platform::posix::Descriptor;

enum class Tool { endsAtOnce, staysOpen, isRun };

struct Pretended {
    OSStatus answer = errAuthorizationSuccess;
    Tool tool = Tool::endsAtOnce;
    std::vector<std::string> calls;
    std::string environment;               // name=value, each
    std::vector<Descriptor> sidesOfTools;  // of the streams of those that stay open
    int lastStream = -1;                   // this process's side
};
Pretended pretended;

std::string textOf(const AuthorizationItemSet* set) {
    std::string text;
    for (UInt32 index = 0; set != nullptr && index < set->count; ++index) {
        const AuthorizationItem& item = set->items[index];
        const std::string value(static_cast<const char*>(item.value), item.value == nullptr ? 0 : item.valueLength);
        text += std::string(item.name) + "=" + value + ";";
    }
    return text;
}

// As the system does: a child of this process in its group, with one stream for what it reads, writes and complains of.
void run(const char* tool, char* const* arguments, int stream) {
    std::vector<char*> list{const_cast<char*>(tool)};
    for (; *arguments != nullptr; ++arguments) {
        list.push_back(*arguments);
    }
    list.push_back(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        const int taken = stream >= 0 ? stream : ::open("/dev/null", O_RDWR);
        for (int standard = STDIN_FILENO; standard <= STDERR_FILENO; ++standard) {
            ::dup2(taken, standard);
        }
        ::execv(tool, list.data());
        ::_exit(127);
    }
}

void startTool(const char* tool, char* const* arguments, std::FILE** stream) {
    std::array<int, 2> ends{-1, -1};
    if (stream != nullptr) {
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
        ::fcntl(ends[0], F_SETFD, 0);  // the system hands it over inheritable
        pretended.lastStream = ends[0];
        *stream = ::fdopen(ends[0], "r+");
    }
    Descriptor other(ends[1]);
    if (pretended.tool == Tool::isRun) {
        run(tool, arguments, other.get());
    } else if (pretended.tool == Tool::staysOpen) {
        pretended.sidesOfTools.push_back(std::move(other));
    }
}

bool becomes(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

std::ptrdiff_t openDescriptors() { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); }

// Running or ended, in this process's own group.
bool hasTools() {
    siginfo_t info{};
    return ::waitid(P_PGID, static_cast<id_t>(::getpgrp()), &info, WEXITED | WNOHANG | WNOWAIT) == 0;
}

AuthorizationRef someRef() {
    static const char storage = 0;
    return reinterpret_cast<AuthorizationRef>(&storage);
}

class AuthorizationServices : public testing::Test {
protected:
    AuthorizationServices() { pretended = Pretended(); }
    ~AuthorizationServices() override { pretended.sidesOfTools.clear(); }

    std::unique_ptr<platform::AuthorizationRef> created() {
        std::unique_ptr<platform::AuthorizationRef> ref;
        EXPECT_EQ(m_authorization.create(std::nullopt, ref), 0);
        pretended.calls.clear();
        return ref;
    }

    platform::macos::MacAuthorization m_authorization;
    const platform::Credentials m_ada{.user = "ada", .password = "pass word"};
};

}  // namespace

extern "C" {

OSStatus AuthorizationCreate(const AuthorizationRights* rights, const AuthorizationEnvironment* environment,
                             AuthorizationFlags flags, AuthorizationRef* made) {
    pretended.calls.push_back("create " + textOf(rights) + std::to_string(flags));
    pretended.environment = textOf(environment);
    *made = pretended.answer == errAuthorizationSuccess ? someRef() : nullptr;
    return pretended.answer;
}

OSStatus AuthorizationFree(AuthorizationRef authorization, AuthorizationFlags flags) {
    pretended.calls.push_back("free " + std::to_string(flags));
    return authorization == someRef() ? errAuthorizationSuccess : errAuthorizationInvalidSet;
}

OSStatus AuthorizationCopyRights(AuthorizationRef /*authorization*/, const AuthorizationRights* rights,
                                 const AuthorizationEnvironment* environment, AuthorizationFlags flags,
                                 AuthorizationRights** authorizedRights) {
    pretended.calls.push_back("rights " + textOf(rights) + std::to_string(flags) +
                              (authorizedRights == nullptr ? "" : " back"));
    pretended.environment = textOf(environment);
    return pretended.answer;
}

// These two are found by their names only, as in the system.
__attribute__((visibility("default"))) OSStatus AuthorizationCopyPrivilegedReference(AuthorizationRef* authorization,
                                                                                     AuthorizationFlags flags) {
    pretended.calls.push_back("inherited " + std::to_string(flags));
    *authorization = pretended.answer == errAuthorizationSuccess ? someRef() : nullptr;
    return pretended.answer;
}

__attribute__((visibility("default"))) OSStatus AuthorizationExecuteWithPrivileges(AuthorizationRef authorization,
                                                                                   const char* tool,
                                                                                   AuthorizationFlags flags,
                                                                                   char* const* arguments,
                                                                                   std::FILE** pipe) {
    std::string call = std::string("execute ") + tool + " " + std::to_string(flags);
    char* const* const first = arguments;
    for (; *arguments != nullptr; ++arguments) {
        call += std::string(" '") + *arguments + "'";
    }
    pretended.calls.push_back(call + (pipe == nullptr ? "" : " with a stream"));
    if (pretended.answer == errAuthorizationSuccess) {
        startTool(tool, first, pipe);
    }
    return authorization == someRef() ? pretended.answer : errAuthorizationInvalidSet;
}

}  // extern "C"

namespace {

using Calls = std::vector<std::string>;
using Interaction = platform::Authorization::Interaction;

TEST_F(AuthorizationServices, MakeAnAuthorizationWithoutRightsAndFreeItWithoutDestroyingThem) {
    std::unique_ptr<platform::AuthorizationRef> ref;
    EXPECT_EQ(m_authorization.create(std::nullopt, ref), 0);
    ref.reset();
    EXPECT_EQ(pretended.calls, (Calls{"create 0", "free 0"}));
}

TEST_F(AuthorizationServices, GetTheNameAndThePasswordWithoutTheirEnds) {
    std::unique_ptr<platform::AuthorizationRef> ref;
    EXPECT_EQ(m_authorization.create(m_ada, ref), 0);
    EXPECT_EQ(pretended.environment, "username=ada;password=pass word;");
}

TEST_F(AuthorizationServices, MayAskTheUserOnlyWhenThatIsAllowed) {
    const auto ref = created();
    EXPECT_EQ(m_authorization.copyRights(*ref, "system.privilege.admin", {}, Interaction::allowed), 0);
    EXPECT_EQ(m_authorization.copyRights(*ref, "system.privilege.admin", m_ada, Interaction::forbidden), 0);
    EXPECT_EQ(pretended.calls, (Calls{"rights system.privilege.admin=;19", "rights system.privilege.admin=;18"}));
}

TEST_F(AuthorizationServices, RefuseNothingSilently) {
    pretended.answer = -60005;
    std::unique_ptr<platform::AuthorizationRef> ref;
    EXPECT_EQ(m_authorization.create(std::nullopt, ref), -60005);
    EXPECT_EQ(ref, nullptr);
    EXPECT_EQ(m_authorization.copyPrivilegedReference(), nullptr);
}

TEST_F(AuthorizationServices, AreNotGivenTextsThatWouldBeCutShort) {
    const auto ref = created();
    const std::string cut("a\0b", 3);
    EXPECT_EQ(m_authorization.execute(*ref, "/bin/rm", {cut}, false), errAuthorizationInvalidSet);
    EXPECT_EQ(m_authorization.copyRights(*ref, "r", platform::Credentials{cut, "p"}, Interaction::allowed),
              errAuthorizationInvalidSet);
    EXPECT_EQ(pretended.calls, Calls{});
}

TEST_F(AuthorizationServices, StartAToolWithItsArgumentsInOrder) {
    const auto ref = created();
    EXPECT_EQ(m_authorization.execute(*ref, "/bin/mv", {"-f", "a b", ""}, false), 0);
    EXPECT_EQ(pretended.calls, Calls{"execute /bin/mv 0 '-f' 'a b' '' with a stream"});
}

class PrivilegedTools : public AuthorizationServices {
protected:
    PrivilegedTools() { pretended.tool = Tool::isRun; }

    int runShell(const std::string& script, bool drain) {
        return m_authorization.execute(*m_ref, "/bin/sh", {"-c", script}, drain);
    }

    const fakes::TemporaryFolder m_folder;
    const std::string m_done = m_folder / "done";
    const std::unique_ptr<platform::AuthorizationRef> m_ref = created();
};

TEST_F(PrivilegedTools, AreReadFromToTheEndWhenTheyAreWaitedFor) {
    EXPECT_EQ(runShell("head -c 1000000 /dev/zero && touch '" + m_done + "'", true), 0);
    EXPECT_TRUE(std::filesystem::exists(m_done));
}

TEST_F(PrivilegedTools, WriteAsMuchAsTheyLikeWhenNobodyWaitsForThem) {
    EXPECT_EQ(runShell("head -c 1000000 /dev/zero && touch '" + m_done + "'", false), 0);
    EXPECT_TRUE(becomes([this] { return std::filesystem::exists(m_done); }));
}

TEST_F(PrivilegedTools, FindTheirInputEmpty) {
    EXPECT_EQ(runShell("cat > '" + m_done + "'", true), 0);
    EXPECT_TRUE(std::filesystem::is_empty(m_done));
}

TEST_F(PrivilegedTools, LeaveNoDescriptorOpenBehindThem) {
    runShell("true", false);  // what is made once is there now
    ASSERT_TRUE(becomes([] { return !hasTools(); }));
    const auto before = openDescriptors();
    for (int tool = 0; tool < 100; ++tool) {
        EXPECT_EQ(runShell("echo said", tool % 2 == 0), 0);
    }
    EXPECT_TRUE(becomes([before] { return openDescriptors() <= before; })) << before << ", now " << openDescriptors();
}

TEST_F(PrivilegedTools, LeaveNoEndedProcessBehindThem) {
    EXPECT_EQ(runShell("exit 3", false), 0);
    EXPECT_TRUE(becomes([] { return !hasTools(); }));
    EXPECT_EQ(runShell("exit 3", true), 0);
    EXPECT_TRUE(becomes([] { return !hasTools(); }));
}

TEST_F(PrivilegedTools, AreNotTakenForToolsThatSomebodyWaitsFor) {
    platform::posix::ProcessLauncher launcher;
    platform::ProcessOptions options;
    options.path = "/bin/sh";
    options.arguments = {"-c", "exit 7"};
    const auto waitedFor = launcher.make(options);
    ASSERT_FALSE(waitedFor->launch());
    siginfo_t info{};
    ASSERT_EQ(::waitid(P_ALL, 0, &info, WEXITED | WNOWAIT), 0);  // it has ended, nobody has asked how
    EXPECT_EQ(runShell("true", false), 0);
    ASSERT_TRUE(becomes([] { return !hasTools(); }));
    EXPECT_EQ(waitedFor->terminationStatus(), 7);
}

TEST_F(PrivilegedTools, AreStartedWithoutAStreamWhereManyRunAlready) {
    pretended.tool = Tool::staysOpen;
    for (int tool = 0; tool < 64; ++tool) {
        m_authorization.execute(*m_ref, "/bin/cp", {}, false);
    }
    EXPECT_EQ(pretended.calls.back(), "execute /bin/cp 0 with a stream");
    m_authorization.execute(*m_ref, "/bin/cp", {}, false);
    EXPECT_EQ(pretended.calls.back(), "execute /bin/cp 0");
    pretended.sidesOfTools.clear();
    EXPECT_TRUE(becomes([this] {
        m_authorization.execute(*m_ref, "/bin/cp", {}, false);
        return pretended.calls.back() == "execute /bin/cp 0 with a stream";
    }));
}

TEST_F(PrivilegedTools, DoNotInheritTheStreamsOfOthers) {
    pretended.tool = Tool::staysOpen;
    m_authorization.execute(*m_ref, "/bin/cp", {}, false);
    EXPECT_EQ(::fcntl(pretended.lastStream, F_GETFD), FD_CLOEXEC);
}

TEST_F(AuthorizationServices, PassOnWhatTheStartedProgramInherits) {
    EXPECT_NE(m_authorization.copyPrivilegedReference(), nullptr);
    EXPECT_EQ(pretended.calls, (Calls{"inherited 0", "free 0"}));
}

}  // namespace
