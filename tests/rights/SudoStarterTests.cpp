// With programs that behave as sudo and su do on machines of many kinds, told what to say by each test.
#include "platform/linux/rights/SudoStarter.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <utility>

#include "platform/linux/rights/CredentialsPrompt.h"
#include "platform/posix/Descriptor.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/rights/AnsweringPrompt.h"

namespace {

using platform::rights::CredentialsPrompt;
using platform::rights::HelperImage;
using platform::rights::PasswordPrompt;
using platform::rights::PasswordRequest;
using platform::rights::StartStatus;
using platform::rights::SudoStarter;
using Clock = std::chrono::steady_clock;
using Problem = PasswordRequest::Problem;
using std::chrono::milliseconds;

const AnsweringPrompt::Step cancel{};

// What the scripts share: `ask` prompts for the password of the account in $1, `say` writes a line, `run` starts what
// sudo was given to start.
constexpr const char* shared = R"(#!/bin/sh
folder=$(dirname "$0")
echo "$0" "$@" >> "$folder/started"
ask() { printf '@@wickfield-rights:%s@@' "$1" >&2; read -r answer || exit 1; echo "$answer" >> "$folder/answers"; }
say() { echo "$1" >&2; }
for helper in "$@"; do :; done
run() { exec "$helper"; }
)";

class AskingSudo : public testing::Test {
protected:
    void SetUp() override {
        const passwd* const entry = ::getpwuid(::getuid());
        ASSERT_NE(entry, nullptr);
        me = entry->pw_name;
    }

    void script(const std::string& name, const std::string& lines) const {
        const std::string path = folder / name;
        std::ofstream(path) << shared << "me=" << me << '\n' << lines << '\n';
        ASSERT_EQ(::chmod(path.c_str(), S_IRWXU), 0);
    }
    void sudoThat(const std::string& lines) const { script("sudo", lines); }

    StartStatus start(PasswordPrompt* prompt) {
        const HelperImage image;
        auto result = SudoStarter(folder / "sudo", folder / "su").start(image, prompt);
        EXPECT_EQ(result.session != nullptr, result.status == StartStatus::granted);
        return result.status;
    }

    std::string written(const std::string& name) const {
        std::ifstream file(folder / name);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    fakes::TemporaryFolder folder;
    std::string me;
};

// The helper says hello as root only, and nothing here makes anybody root.
class GrantingSudo : public AskingSudo {
protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "only the superuser can start the helper without a real sudo";
        }
        AskingSudo::SetUp();
    }
};

TEST_F(GrantingSudo, AsksNobodyWhenSudoWantsNothing) {
    sudoThat("run");
    AnsweringPrompt prompt({}, me);
    EXPECT_EQ(start(&prompt), StartStatus::granted);
    EXPECT_TRUE(prompt.requests().empty());
}

TEST_F(AskingSudo, HandsThePasswordOverAsItIs) {
    sudoThat("ask $me");
    AnsweringPrompt prompt({{.password = " p'a\"s$ w\\\xc3\xb6rd "}}, me);
    start(&prompt);
    EXPECT_NE(written("answers"), "");
    EXPECT_EQ(prompt.requests().size(), 1U);
    EXPECT_FALSE(prompt.isOpen());
}

TEST_F(GrantingSudo, GrantsWhatThePasswordOpens) {
    sudoThat("ask $me; run");
    AnsweringPrompt prompt({{.password = "right"}}, me);
    EXPECT_EQ(start(&prompt), StartStatus::granted);
    EXPECT_EQ(written("answers"), "right\n");
}

TEST_F(AskingSudo, OffersThePresentUserAndAnyOtherAccount) {
    sudoThat("ask $me");
    AnsweringPrompt prompt({cancel}, me);
    start(&prompt);
    const auto request = prompt.requests().at(0);
    const auto offers = [&](const auto& one) { return one.user == me; };
    EXPECT_TRUE(std::ranges::any_of(request.administrators, offers));
    EXPECT_TRUE(request.mayNameAnother);
    EXPECT_EQ(request.problem, Problem::none);
}

TEST_F(AskingSudo, SaysThatThePasswordWasWrong) {
    sudoThat("ask $me; say 'Sorry, try again.'; say 'Two attempts left.'; ask $me");
    AnsweringPrompt prompt({{.password = "wrong"}, cancel}, me);
    EXPECT_EQ(start(&prompt), StartStatus::cancelled);
    ASSERT_EQ(prompt.requests().size(), 2U);
    EXPECT_EQ(prompt.requests()[1].problem, Problem::wrongPassword);
    EXPECT_EQ(prompt.requests()[1].details, "Two attempts left.");
    EXPECT_EQ(prompt.requests()[1].user, me);
}

TEST_F(AskingSudo, KeepsInsultsToItself) {
    sudoThat("ask $me; say 'Wrong! You cheating scum!'; ask $me");
    AnsweringPrompt prompt({{.password = "wrong"}, cancel}, me);
    start(&prompt);
    ASSERT_EQ(prompt.requests().size(), 2U);
    EXPECT_EQ(prompt.requests()[1].problem, Problem::wrongPassword);
    EXPECT_EQ(prompt.requests()[1].details, "");
}

TEST_F(AskingSudo, SaysThatNoFurtherAttemptIsTakenAndWaitsForThatToBeRead) {
    sudoThat("ask $me; say 'sudo: 1 incorrect password attempt'; exit 1");
    AnsweringPrompt prompt({{.password = "wrong"}, {.password = {}, .after = milliseconds{200}}}, me);
    const auto begun = Clock::now();
    EXPECT_EQ(start(&prompt), StartStatus::refused);
    EXPECT_GE(Clock::now() - begun, milliseconds{200});
    ASSERT_EQ(prompt.requests().size(), 2U);
    EXPECT_EQ(prompt.requests()[1].problem, Problem::lockedOut);
    EXPECT_EQ(prompt.requests()[1].details, "1 incorrect password attempt");
    EXPECT_FALSE(prompt.isOpen());
}

TEST_F(AskingSudo, SaysThatAnAccountIsLockedEvenWithoutAQuestion) {
    sudoThat("say 'The account is locked due to 3 failed logins.'; say 'sudo: 3 incorrect password attempts'; exit 1");
    AnsweringPrompt prompt({cancel}, me);
    EXPECT_EQ(start(&prompt), StartStatus::refused);
    EXPECT_EQ(prompt.requests().at(0).problem, Problem::lockedOut);
    EXPECT_EQ(prompt.requests().at(0).details,
              "The account is locked due to 3 failed logins.\n3 incorrect password attempts");
}

TEST_F(AskingSudo, AsksForACodeWhenTheMachineWantsOne) {
    sudoThat("ask $me; printf 'Verification code: ' >&2; read -r code; echo $code >> $folder/answers; exit 1");
    AnsweringPrompt prompt({{.password = "right"}, {.password = "123456"}}, me);
    start(&prompt);
    ASSERT_EQ(prompt.requests().size(), 2U);
    const auto request = prompt.requests()[1];
    EXPECT_EQ(request.question, "Verification code:");
    EXPECT_EQ(request.problem, Problem::none);
    EXPECT_FALSE(request.mayNameAnother);
    EXPECT_EQ(written("answers"), "right\n123456\n");
}

TEST_F(AskingSudo, SaysThatACodeWasWrong) {
    sudoThat("for i in 1 2; do printf 'Code: ' >&2; read -r code; say 'Sorry, try again.'; done");
    AnsweringPrompt prompt({{.password = "1"}, cancel}, me);
    start(&prompt);
    ASSERT_EQ(prompt.requests().size(), 2U);
    EXPECT_EQ(prompt.requests()[1].question, "Code:");
    EXPECT_EQ(prompt.requests()[1].problem, Problem::wrongPassword);
}

TEST_F(AskingSudo, AsksForThePasswordThatTheMachineWants) {
    sudoThat("ask root2");
    AnsweringPrompt prompt({{.password = "x", .user = "root2"}}, me);
    start(&prompt);
    ASSERT_EQ(prompt.requests().at(0).administrators.size(), 1U);
    EXPECT_EQ(prompt.requests()[0].administrators[0].user, "root2");
    EXPECT_FALSE(prompt.requests()[0].mayNameAnother);
    EXPECT_EQ(written("answers"), "x\n");
}

TEST_F(AskingSudo, OffersOthersWhenTheAccountMayNot) {
    sudoThat("ask $me; say \"$me is not in the sudoers file.\"; exit 1");
    AnsweringPrompt prompt({{.password = "right"}, cancel}, me);
    EXPECT_EQ(start(&prompt), StartStatus::cancelled);
    ASSERT_EQ(prompt.requests().size(), 2U);
    EXPECT_EQ(prompt.requests()[1].problem, Problem::notAdministrator);
    EXPECT_TRUE(prompt.requests()[1].mayNameAnother);
    EXPECT_EQ(prompt.requests()[1].details, me + " is not in the sudoers file.");
}

TEST_F(GrantingSudo, StartsAgainWhenTheMachineDoesNotWaitForTheAnswer) {
    sudoThat("ask $me; run");
    script("sudo", R"(if [ -e "$folder/again" ]; then ask $me; run; fi
printf '@@wickfield-rights:%s@@' "$me" >&2
touch "$folder/again"; say 'sudo: timed out reading password'; say 'sudo: a password is required'; exit 1)");
    AnsweringPrompt prompt({{.password = "late", .after = milliseconds{300}}}, me);
    EXPECT_EQ(start(&prompt), StartStatus::granted);
    EXPECT_EQ(prompt.requests().size(), 1U);
    EXPECT_EQ(written("answers"), "late\n");
}

TEST_F(AskingSudo, LetsGoAtOnceWhenCancelled) {
    sudoThat("ask $me");
    AnsweringPrompt prompt({{.password = {}, .after = milliseconds{100}}}, me);
    const auto begun = Clock::now();
    EXPECT_EQ(start(&prompt), StartStatus::cancelled);
    EXPECT_LT(Clock::now() - begun, milliseconds{1000});
    EXPECT_FALSE(prompt.isOpen());
}

TEST_F(AskingSudo, LetsGoAtOnceWhenCancelledWhileTheAnswerIsChecked) {
    sudoThat("ask $me; exec sleep 5");
    AnsweringPrompt prompt({{.password = "x", .cancelAfter = milliseconds{100}}}, me);
    const auto begun = Clock::now();
    EXPECT_EQ(start(&prompt), StartStatus::cancelled);
    EXPECT_LT(Clock::now() - begun, milliseconds{1000});
}

// What the number of the helper's descriptor stands for by then is the program's next file.
TEST_F(AskingSudo, StartsNothingElseWhenItGoesOnAfterACancel) {
    sudoThat("ask $me; sleep 0.3; \"$helper\"; echo > $folder/over");
    std::ofstream(folder / "other") << "#!/bin/sh\necho > " << folder / "started-other" << '\n';
    ASSERT_EQ(::chmod((folder / "other").c_str(), S_IRWXU), 0);
    AnsweringPrompt prompt({{.password = "x", .cancelAfter = milliseconds{50}}}, me);
    int number = -1;
    {
        const HelperImage image;
        number = image.descriptor();
        EXPECT_EQ(SudoStarter(folder / "sudo", folder / "su").start(image, &prompt).status, StartStatus::cancelled);
    }
    const platform::posix::Descriptor other(::open((folder / "other").c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_TRUE(other.get() == number || ::dup2(other.get(), number) == number);
    const auto limit = Clock::now() + std::chrono::seconds{5};
    while (written("over").empty() && Clock::now() < limit) {
        std::this_thread::sleep_for(milliseconds{10});
    }
    if (other.get() != number) {
        ::close(number);
    }
    EXPECT_EQ(written("over"), "\n");
    EXPECT_EQ(written("started-other"), "");
}

TEST_F(GrantingSudo, NoticesThatTheHelperWasCutOffFromItsSocket) {
    sudoThat("ask $me; \"$helper\" < /dev/null; exit 1");
    AnsweringPrompt prompt({{.password = "right"}}, me);
    EXPECT_EQ(start(&prompt), StartStatus::unavailable);
    EXPECT_EQ(prompt.requests().size(), 1U);
}

TEST_F(AskingSudo, BelievesNoHelperThatIsNotRoots) {
    sudoThat("printf 'not what a helper says' >&0; exec sleep 1");
    AnsweringPrompt prompt({}, me);
    EXPECT_EQ(start(&prompt), StartStatus::unavailable);
}

TEST_F(AskingSudo, IsNoWayWhereSudoWantsATerminal) {
    sudoThat("say 'sudo: sorry, you must have a tty to run sudo'; exit 1");
    AnsweringPrompt prompt({}, me);
    EXPECT_EQ(start(&prompt), StartStatus::unavailable);
    EXPECT_TRUE(prompt.requests().empty());
}

TEST_F(AskingSudo, IsNoWayWhereThereIsNeitherSudoNorSu) {
    AnsweringPrompt prompt({}, me);
    EXPECT_EQ(start(&prompt), StartStatus::unavailable);
    EXPECT_TRUE(prompt.requests().empty());
}

TEST_F(AskingSudo, SendsNoPasswordThatIsMoreThanALine) {
    for (const std::string& password : {std::string("a\nb"), std::string("a\0b", 3), std::string(512, 'x')}) {
        sudoThat("ask $me");
        AnsweringPrompt prompt({{.password = password}, cancel}, me);
        EXPECT_EQ(start(&prompt), StartStatus::cancelled);
        EXPECT_EQ(prompt.requests().back().problem, Problem::wrongPassword);
    }
    EXPECT_EQ(written("answers"), "");
}

TEST_F(AskingSudo, StartsNothingThatAShellCouldReadOtherwise) {
    const HelperImage image;
    AnsweringPrompt prompt({}, me);
    SudoStarter starter(folder / "su do;'", folder / "su");
    EXPECT_EQ(starter.start(image, &prompt).status, StartStatus::unavailable);
}

TEST_F(AskingSudo, MayUseWhatSudoRemembersWhenSomebodyIsAsked) {
    sudoThat("exit 1");
    AnsweringPrompt prompt({}, me);
    start(&prompt);
    EXPECT_EQ(written("started").find(" -k"), std::string::npos);
}

TEST_F(AskingSudo, HasACredentialsPasswordCheckedAfresh) {
    sudoThat("exit 1");
    CredentialsPrompt prompt({.user = me, .password = "x"});
    start(&prompt);
    EXPECT_NE(written("started").find(" -k "), std::string::npos);
}

TEST_F(AskingSudo, AsksNothingWithoutAPrompt) {
    sudoThat("case \" $* \" in *' -n '*) say 'sudo: a password is required'; exit 1;; esac; ask $me");
    EXPECT_EQ(start(nullptr), StartStatus::unavailable);
    EXPECT_EQ(written("answers"), "");
}

TEST_F(GrantingSudo, IsGrantedWithoutAPromptWhereNothingIsAsked) {
    sudoThat("run");
    EXPECT_EQ(start(nullptr), StartStatus::granted);
}

TEST_F(AskingSudo, SpeaksTheLanguageThatIsUnderstood) {
    sudoThat("echo \"$LC_ALL$LANGUAGE\" > $folder/locale; exit 1");
    ::setenv("LANGUAGE", "de", 1);
    ::setenv("LC_ALL", "de_DE.UTF-8", 1);
    AnsweringPrompt prompt({}, me);
    start(&prompt);
    ::unsetenv("LANGUAGE");
    ::unsetenv("LC_ALL");
    EXPECT_EQ(written("locale"), "C\n");
}

// Another administrator: some account of every machine that is not the one that runs the tests.
class NamingAnother : public AskingSudo {
protected:
    void SetUp() override {
        AskingSudo::SetUp();
        other = me == "daemon" ? "bin" : "daemon";
        sudoThat("ask $me");
    }
    void suThat(const std::string& lines) const {
        script("su",
               "su_ask() { printf 'Password: ' >&2; read -r answer; echo \"$answer\" >> \"$folder/su-answers\"; }\n" +
                   lines);
    }
    std::string other;
};

TEST_F(NamingAnother, AnswersSuAndThenSudoWithThePassword) {
    suThat("su_ask; ask $1");
    AnsweringPrompt prompt({{.password = "theirs", .user = other}}, me);
    start(&prompt);
    EXPECT_EQ(written("su-answers"), "theirs\n");
    EXPECT_EQ(written("answers"), "theirs\n");
    EXPECT_EQ(prompt.requests().size(), 1U);
}

TEST_F(NamingAnother, HandsTheNameOverAsAnArgumentOnly) {
    suThat("shift 4; echo \"$*\" > $folder/line");
    AnsweringPrompt prompt({{.password = "x", .user = other}}, me);
    start(&prompt);
    EXPECT_NE(written("started").find("/su " + other + " -s /bin/sh --session-command "), std::string::npos);
    EXPECT_NE(written("line"), "");
    EXPECT_EQ(written("line").find(other), std::string::npos);
}

TEST_F(NamingAnother, LeavesItsOwnEnvironmentBehind) {
    suThat("env > $folder/environment");
    ::setenv("WICKFIELD_TEST", "1", 1);
    AnsweringPrompt prompt({{.password = "x", .user = other}}, me);
    start(&prompt);
    ::unsetenv("WICKFIELD_TEST");
    EXPECT_NE(written("environment").find("LC_ALL=C\n"), std::string::npos);
    EXPECT_EQ(written("environment").find("WICKFIELD_TEST"), std::string::npos);
}

TEST_F(NamingAnother, NeverStartsSuForANameThatIsNone) {
    suThat("su_ask");
    for (const std::string& name : {std::string("-c"), std::string("no-such-account"), std::string("a\nb"),
                                    std::string("root\0", 5), std::string("--help")}) {
        AnsweringPrompt prompt({{.password = "x", .user = name}, cancel}, me);
        EXPECT_EQ(start(&prompt), StartStatus::cancelled);
        EXPECT_EQ(prompt.requests().back().problem, Problem::wrongPassword);
    }
    EXPECT_EQ(written("started").find("/su "), std::string::npos);
}

TEST_F(NamingAnother, TakesThreeWrongPasswords) {
    suThat("su_ask; say 'su: Authentication failure'; exit 1");
    AnsweringPrompt prompt(
        {{.password = "1", .user = other}, {.password = "2", .user = other}, {.password = "3", .user = other}, cancel},
        me);
    EXPECT_EQ(start(&prompt), StartStatus::refused);
    ASSERT_EQ(prompt.requests().size(), 4U);
    EXPECT_EQ(prompt.requests()[1].problem, Problem::wrongPassword);
    EXPECT_EQ(prompt.requests()[1].user, other);
    EXPECT_EQ(prompt.requests()[3].problem, Problem::lockedOut);
    EXPECT_EQ(written("su-answers"), "1\n2\n3\n");
}

TEST_F(NamingAnother, SaysThatTheOtherIsNoAdministratorEither) {
    suThat("su_ask; ask $1; say \"$1 is not in the sudoers file.\"; exit 1");
    AnsweringPrompt prompt({{.password = "x", .user = other}, cancel}, me);
    EXPECT_EQ(start(&prompt), StartStatus::cancelled);
    EXPECT_EQ(prompt.requests().back().problem, Problem::notAdministrator);
}

TEST_F(NamingAnother, SaysThatTheOthersAccountTakesNobodyIn) {
    suThat(
        "su_ask; say 'su: using restricted shell /usr/sbin/nologin'; say 'This account is currently not available.'; "
        "exit 1");
    AnsweringPrompt prompt({{.password = "x", .user = other}, cancel}, me);
    EXPECT_EQ(start(&prompt), StartStatus::cancelled);
    EXPECT_EQ(prompt.requests().back().problem, Problem::notAdministrator);
    EXPECT_EQ(prompt.requests().back().details,
              "using restricted shell /usr/sbin/nologin\nThis account is currently not available.");
}

TEST_F(NamingAnother, GoesStraightToTheOneWhoseCredentialsAreKnown) {
    suThat("su_ask");
    CredentialsPrompt prompt({.user = other, .password = "theirs"});
    start(&prompt);
    EXPECT_TRUE(written("started").starts_with(folder / "su "));
    EXPECT_EQ(written("su-answers"), "theirs\n");
}

TEST_F(NamingAnother, ComesBackToThePresentUser) {
    suThat("su_ask; say 'su: Authentication failure'; exit 1");
    AnsweringPrompt prompt({{.password = "x", .user = other}, {.password = "mine", .user = me}}, me);
    start(&prompt);
    EXPECT_EQ(written("answers"), "mine\n");
    EXPECT_EQ(prompt.requests().size(), 2U);
}

class WithoutSudo : public NamingAnother {
protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "only the superuser can start the helper without a real su";
        }
        NamingAnother::SetUp();
    }
};

TEST_F(WithoutSudo, AsksForRootsPasswordWhereThereIsNoSudo) {
    ASSERT_EQ(::unlink((folder / "sudo").c_str()), 0);
    suThat("su_ask; shift 4; exec /bin/sh -c \"$1\"");
    ASSERT_EQ(::chmod((folder / "su").c_str(), S_ISUID | S_IRWXU), 0);
    AnsweringPrompt prompt({{.password = "roots"}}, me);
    EXPECT_EQ(start(&prompt), StartStatus::granted);
    EXPECT_EQ(written("su-answers"), "roots\n");
    ASSERT_EQ(prompt.requests().size(), 1U);
    EXPECT_EQ(prompt.requests()[0].administrators.front().user, "root");
    EXPECT_FALSE(prompt.requests()[0].mayNameAnother);
}

}  // namespace
