#include "platform/linux/services/files/ActingAs.h"

#include <fcntl.h>
#include <sys/wait.h>

#include <future>
#include <thread>

#include "tests/linux/FilesFixture.h"

namespace {

using platform::linux_host::ActingAs;
using platform::linux_host::Owner;

constexpr Owner user{1234, 2345};

class ActingAsAUser : public FilesFixture {
protected:
    void SetUp() override {
        if (!isSuperuser()) {
            GTEST_SKIP() << "only the superuser acts for somebody else";
        }
        setMode(".", 0711);
        makeFolder("his");
        ASSERT_EQ(::chown(at("his").c_str(), user.user, user.group), 0);
    }
    bool makes(const std::string& name) const { return ::mkdir(at(name).c_str(), 0700) == 0; }
};

TEST_F(ActingAsAUser, MakesThingsHisAndNothingWhereHeMayNot) {
    {
        const ActingAs rights(user);
        ASSERT_TRUE(rights);
        EXPECT_TRUE(makes("his/folder"));
        EXPECT_FALSE(makes("not-his"));
        EXPECT_EQ(errno, EACCES);
    }
    EXPECT_EQ(status("his/folder").st_uid, user.user);
    EXPECT_EQ(status("his/folder").st_gid, user.group);
}

TEST_F(ActingAsAUser, KeepsNoneOfTheSuperusersGroups) {
    makeFolder("group's");
    setMode("group's", 0770);
    const ActingAs rights(user);
    EXPECT_FALSE(makes("group's/folder"));
}

TEST_F(ActingAsAUser, EndsWithTheSuperusersRightsAndGroupsAgain) {
    std::vector<gid_t> before(64);
    before.resize(static_cast<std::size_t>(::getgroups(64, before.data())));
    { const ActingAs rights(user); }
    std::vector<gid_t> after(64);
    after.resize(static_cast<std::size_t>(::getgroups(64, after.data())));
    EXPECT_EQ(after, before);
    EXPECT_TRUE(makes("folder"));
    EXPECT_EQ(status("folder").st_uid, 0U);
    EXPECT_EQ(status("folder").st_gid, ::getegid());
    EXPECT_EQ(::chown(at("folder").c_str(), 1, 1), 0);
}

TEST_F(ActingAsAUser, GoesOnWhenAScopeWithinItEnds) {
    const ActingAs rights(user);
    {
        const ActingAs same(user);
        EXPECT_TRUE(makes("his/within"));
    }
    EXPECT_FALSE(makes("not-his"));
    EXPECT_TRUE(makes("his/afterwards"));
}

TEST_F(ActingAsAUser, ConcernsNoOtherThread) {
    std::promise<void> changed;
    std::promise<bool> made;
    std::thread other([&] {
        changed.get_future().wait();
        made.set_value(makes("by-another-thread"));
    });
    const ActingAs rights(user);
    changed.set_value();
    EXPECT_TRUE(made.get_future().get());
    other.join();
}

TEST_F(ActingAsAUser, LeavesTheErrorOfTheLastCallAlone) {
    {
        const ActingAs rights(user);
        errno = ENOTDIR;
    }
    EXPECT_EQ(errno, ENOTDIR);
}

TEST_F(ActingAsAUser, ChangesNothingWithoutAUser) {
    const ActingAs rights(std::nullopt);
    EXPECT_TRUE(rights);
    EXPECT_TRUE(makes("folder"));
}

TEST(ActingAsAnother, IsRefusedToAnOrdinaryUser) {
    const pid_t child = ::fork();
    if (child == 0) {
        if (::geteuid() == 0 && ::setuid(4321) != 0) {
            ::_exit(2);
        }
        ::_exit(ActingAs(user) ? 1 : 0);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

}  // namespace
