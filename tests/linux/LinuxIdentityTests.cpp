#include "platform/linux/services/LinuxIdentity.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/services/Accounts.h"
#include "tests/fakes/ScopedEnvironment.h"

namespace {

using platform::linux_host::accountNamed;
using platform::linux_host::accountOf;
using platform::linux_host::LinuxIdentity;

std::string homeInTheDatabase() { return ::getpwuid(::getuid())->pw_dir; }

TEST(Accounts, AreFoundByNumberAndName) {
    const auto root = accountOf(0);

    ASSERT_TRUE(root);
    EXPECT_EQ(root->name, "root");
    EXPECT_EQ(root->home, "/root");
    ASSERT_TRUE(accountNamed("root"));
    EXPECT_EQ(accountNamed("root")->uid, 0U);
}

TEST(Accounts, ThatDoNotExistAreNone) {
    EXPECT_FALSE(accountOf(4000000000));
    EXPECT_FALSE(accountNamed("nobody-by-that-name"));
    EXPECT_FALSE(accountNamed(""));
    EXPECT_FALSE(accountNamed(std::string(100000, 'x')));
}

TEST(Identity, IsThatOfTheProcess) {
    LinuxIdentity identity;

    EXPECT_EQ(identity.realUserID(), ::getuid());
    EXPECT_EQ(identity.userName(), ::getpwuid(::getuid())->pw_name);
}

TEST(Identity, KnowsTheHomesOfOthers) {
    EXPECT_EQ(LinuxIdentity().homeFolderForUser("daemon"), accountNamed("daemon")->home);
    EXPECT_EQ(LinuxIdentity().homeFolderForUser("nobody-by-that-name"), std::nullopt);
}

TEST(Identity, OfTheSuperuserHasTheHomeOfItsAccountWhateverTheEnvironmentSays) {
    if (::getuid() != 0) {
        GTEST_SKIP() << "needs to run as the superuser";
    }
    const fakes::ScopedEnvironment home("HOME", "/home/somebody");

    EXPECT_EQ(LinuxIdentity().homeFolder(), homeInTheDatabase());
}

// The exit code of the work, done in a child by an ordinary user.
template <typename Work>
int asOrdinaryUser(Work work) {
    constexpr uid_t daemon = 1;
    const pid_t child = ::fork();
    if (child == 0) {
        if (::getuid() == 0 && ::setuid(daemon) != 0) {
            ::_exit(100);
        }
        ::_exit(work() ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Identity, OfAnOrdinaryUserHasTheHomeOfTheEnvironment) {
    EXPECT_EQ(asOrdinaryUser([] {
                  const fakes::ScopedEnvironment home("HOME", "/home/somebody");
                  return LinuxIdentity().homeFolder() == "/home/somebody";
              }),
              0);
}

TEST(Identity, OfAnOrdinaryUserHasTheHomeOfTheAccountWhenTheEnvironmentHasNoAbsolutePath) {
    for (const auto& value :
         {std::optional<std::string>(), std::optional<std::string>(""), std::optional<std::string>("relative")}) {
        EXPECT_EQ(asOrdinaryUser([&] {
                      const fakes::ScopedEnvironment home("HOME", value);
                      return LinuxIdentity().homeFolder() == homeInTheDatabase();
                  }),
                  0);
    }
}

TEST(Identity, OfAnAccountThatIsNotInTheDatabaseIsItsNumber) {
    if (::getuid() != 0) {
        GTEST_SKIP() << "needs to run as the superuser to become another account";
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::unsetenv("HOME");
        const bool changed = ::setuid(3999999999) == 0;
        LinuxIdentity identity;
        ::_exit(changed && identity.userName() == "3999999999" && identity.homeFolder() == "/" ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

}  // namespace
