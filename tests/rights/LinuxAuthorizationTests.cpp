#include "platform/linux/rights/LinuxAuthorization.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/rights/SessionStarter.h"
#include "tests/fakes/FakeMainThread.h"
#include "tests/rights/AnsweringPrompt.h"

namespace {

using platform::AuthorizationRef;
using platform::rights::HelperImage;
using platform::rights::LinuxAuthorization;
using platform::rights::PasswordPrompt;
using platform::rights::RightsSession;
using platform::rights::SessionStarter;
using platform::rights::StartResult;
using platform::rights::StartStatus;
using Interaction = platform::Authorization::Interaction;

constexpr const char* administratorRight = "system.privilege.admin";

// What a way to rights was asked for, and what it makes of it.
struct Way {
    StartStatus status = StartStatus::unavailable;
    int asked = 0;
    PasswordPrompt* prompt = nullptr;
    std::optional<std::string> knownUser{};
    std::thread::id thread{};
    bool wasDumpable = false;
    rlim_t coreSize = 1;
    std::function<void()> meanwhile{};
};

class StarterOfATest : public SessionStarter {
public:
    explicit StarterOfATest(Way& way) : m_way(way) {}

    StartResult start(const HelperImage& /*image*/, PasswordPrompt* prompt) override {
        ++m_way.asked;
        m_way.prompt = prompt;
        m_way.knownUser = prompt != nullptr ? prompt->knownUser() : std::nullopt;
        m_way.thread = std::this_thread::get_id();
        m_way.wasDumpable = ::prctl(PR_GET_DUMPABLE) != 0;
        rlimit core{};
        ::getrlimit(RLIMIT_CORE, &core);
        m_way.coreSize = core.rlim_cur;
        if (m_way.meanwhile) {
            m_way.meanwhile();
        }
        StartResult result{.status = m_way.status, .session = nullptr};
        if (m_way.status == StartStatus::granted) {
            result.session = std::make_unique<RightsSession>(platform::posix::Descriptor());
        }
        return result;
    }

private:
    Way& m_way;
};

class HostsRights : public testing::Test {
protected:
    void TearDown() override { ::prctl(PR_SET_DUMPABLE, m_dumpable); }

    std::unique_ptr<AuthorizationRef> created() {
        std::unique_ptr<AuthorizationRef> made;
        EXPECT_EQ(rights.create({}, made), 0);
        return made;
    }
    int ask(AuthorizationRef& ref, Interaction interaction = Interaction::allowed) {
        return rights.copyRights(ref, administratorRight, {}, interaction);
    }
    int ask() { return ask(*created()); }

    Way first;
    Way second;
    fakes::FakeMainThread mainThread;
    AnsweringPrompt prompt{{}, "root"};
    LinuxAuthorization rights{mainThread, &prompt, [this] {
                                  std::vector<std::unique_ptr<SessionStarter>> ways;
                                  ways.push_back(std::make_unique<StarterOfATest>(first));
                                  ways.push_back(std::make_unique<StarterOfATest>(second));
                                  return ways;
                              }()};

private:
    const int m_dumpable = ::prctl(PR_GET_DUMPABLE);
};

TEST_F(HostsRights, ComeByTheFirstWayThatThereIs) {
    second.status = StartStatus::granted;
    EXPECT_EQ(ask(), 0);
    EXPECT_EQ(first.asked, 1);
    EXPECT_EQ(second.asked, 1);
}

TEST_F(HostsRights, ComeByNoOtherWayOnceOneHasAnswered) {
    second.status = StartStatus::granted;
    first.status = StartStatus::cancelled;
    EXPECT_EQ(ask(), ECANCELED);
    first.status = StartStatus::refused;
    EXPECT_EQ(ask(), EACCES);
    EXPECT_EQ(second.asked, 0);
}

TEST_F(HostsRights, AreNotSupportedWithoutAnyWay) { EXPECT_EQ(ask(), ENOTSUP); }

TEST_F(HostsRights, AreAskedForOncePerAuthorization) {
    first.status = StartStatus::granted;
    const auto ref = created();
    EXPECT_EQ(ask(*ref), 0);
    EXPECT_EQ(ask(*ref), 0);
    EXPECT_EQ(first.asked, 1);
}

TEST_F(HostsRights, AreNoOthersThanTheAdministrators) {
    first.status = StartStatus::granted;
    const auto ref = created();
    EXPECT_EQ(rights.copyRights(*ref, "system.privilege.taskport", {}, Interaction::allowed), ENOTSUP);
    EXPECT_EQ(first.asked, 0);
}

TEST_F(HostsRights, AreAskedForWithoutAPromptWhereThatIsForbidden) {
    ask(*created(), Interaction::forbidden);
    EXPECT_EQ(first.prompt, nullptr);
    ask(*created(), Interaction::allowed);
    EXPECT_EQ(first.prompt, &prompt);
}

TEST_F(HostsRights, AreAskedForWithTheCredentialsThatAreKnown) {
    const platform::Credentials known{.user = "ada", .password = "password"};
    rights.copyRights(*created(), administratorRight, known, Interaction::forbidden);
    EXPECT_EQ(first.knownUser, "ada");
    EXPECT_TRUE(prompt.requests().empty());
}

TEST_F(HostsRights, AreRefusedAndNotCancelledWhereNobodyWasAsked) {
    first.status = StartStatus::cancelled;
    const platform::Credentials known{.user = "ada", .password = "password"};
    EXPECT_EQ(rights.copyRights(*created(), administratorRight, known, Interaction::forbidden), EACCES);
}

TEST_F(HostsRights, StartNoToolBeforeTheyAreGranted) {
    const auto ref = created();
    EXPECT_EQ(rights.execute(*ref, "/bin/true", {}, false), EPERM);
    ask(*ref);
    EXPECT_EQ(rights.execute(*ref, "/bin/true", {}, false), EPERM);
}

TEST_F(HostsRights, StartNoToolOnceTheHelperIsGone) {
    first.status = StartStatus::granted;  // a session without a helper
    const auto ref = created();
    ask(*ref);
    EXPECT_EQ(rights.execute(*ref, "/bin/true", {}, false), EPIPE);
}

TEST_F(HostsRights, AreWaitedForOffTheMainThreadWhichServesEventsMeanwhile) {
    bool served = false;
    first.meanwhile = [&] { mainThread.performAndWait([&] { served = true; }); };
    ask();
    EXPECT_TRUE(served);
    EXPECT_NE(first.thread, std::this_thread::get_id());
}

TEST_F(HostsRights, AreWaitedForWhereTheyAreAskedForOnOtherThreads) {
    std::thread::id asking;
    std::thread([&] {
        asking = std::this_thread::get_id();
        ask();
    }).join();
    EXPECT_EQ(first.thread, asking);
    EXPECT_EQ(mainThread.slices, 0);
}

TEST_F(HostsRights, AreNotGrantedWhenMemoryRunsOutWhileTheyAreAskedFor) {
    first.status = StartStatus::granted;
    first.meanwhile = [] { throw std::bad_alloc(); };
    EXPECT_EQ(ask(), ENOMEM);
    std::thread([&] { EXPECT_EQ(ask(), ENOMEM); }).join();
    first.meanwhile = {};
    EXPECT_EQ(ask(), 0);
}

TEST_F(HostsRights, AreNotGrantedWhenNoThreadCanBeStarted) {
    first.status = StartStatus::granted;
    const pid_t user = ::fork();
    if (user == 0) {
        constexpr uid_t nobodys = 23451;
        constexpr rlimit none{0, 0};
        if ((::geteuid() == 0 && ::setresuid(nobodys, nobodys, nobodys) != 0) ||
            ::setrlimit(RLIMIT_NPROC, &none) != 0) {
            ::_exit(2);
        }
        ::_exit(ask() == EAGAIN && first.asked == 0 ? 0 : 1);
    }
    int status = -1;
    ::waitpid(user, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST_F(HostsRights, AreAskedForByAProcessThatNobodyCanLookInto) {
    ::prctl(PR_SET_DUMPABLE, 1);
    ask();
    EXPECT_FALSE(first.wasDumpable);
    EXPECT_EQ(first.coreSize, 0U);
}

TEST_F(HostsRights, LeaveAProcessAsItIsUntilTheyAreAskedFor) {
    ::prctl(PR_SET_DUMPABLE, 1);
    created();
    rights.copyPrivilegedReference();
    EXPECT_EQ(::prctl(PR_GET_DUMPABLE), 1);
}

TEST_F(HostsRights, AreInheritedByNobodyWhoIsRootOrHasNothingOfRoot) {
    EXPECT_EQ(rights.copyPrivilegedReference(), nullptr);
}

}  // namespace
