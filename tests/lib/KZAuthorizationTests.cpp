#include "lib/KZAuthorization.h"

#include "tests/lib/FilesFixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;
using Interaction = platform::Authorization::Interaction;

namespace {

class AuthorizationSession : public FilesFixture {
protected:
    static KZAuthorization& session() { return *KZAuthorization::sharedController(); }
};

TEST_F(AuthorizationSession, IsOneForTheProcess) {
    auto* shared = KZAuthorization::sharedController();
    EXPECT_EQ(KZAuthorization::sharedController(), shared);
    EXPECT_EQ(KZAuthorization::sharedController(WithGUI::no), shared);
    EXPECT_TRUE(shared->hasGUI());
}

TEST_F(AuthorizationSession, IsAllocatedOnlyOnce) {
    auto* first = KZAuthorization::alloc();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(KZAuthorization::alloc(), nullptr);
    EXPECT_EQ(KZAuthorization::sharedController(), first);
    EXPECT_EQ(first->init(), first);
    EXPECT_TRUE(first->hasGUI());
}

TEST_F(AuthorizationSession, IsTheSameOneForThreadsThatAskAtOnce) {
    std::vector<KZAuthorization*> found(8);
    std::vector<std::thread> threads;
    threads.reserve(found.size());
    for (auto& place : found) {
        threads.emplace_back([&place] { place = KZAuthorization::sharedController(); });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(found, ::testing::Each(found.front()));
}

TEST_F(AuthorizationSession, KeepsWhatTheFirstCallerSaidAboutDialogs) {
    EXPECT_FALSE(KZAuthorization::sharedController(WithGUI::no)->hasGUI());
    EXPECT_FALSE(session().hasGUI());
    session().setHasGUI(true);
    EXPECT_TRUE(session().hasGUI());
}

TEST_F(AuthorizationSession, NotesTheHomeFolderOfAnOrdinaryUser) {
    EXPECT_THAT(session().userDirectory(), Optional(home));
}

TEST_F(AuthorizationSession, NotesNoHomeFolderOfTheSuperuser) {
    makeSuperuser();
    identity.console = "grace";
    identity.homes["grace"] = "/home/grace";
    EXPECT_EQ(session().userDirectory(), std::nullopt);
}

TEST_F(AuthorizationSession, AdoptsTheRightsThatTheProcessWasStartedWith) {
    authorization.inherits = true;
    EXPECT_TRUE(session().isAuthorized());
    EXPECT_TRUE(session().authStart());
    EXPECT_EQ(authorization.created, 0);
}

TEST_F(AuthorizationSession, StartsByAskingTheUserOnce) {
    EXPECT_FALSE(session().isAuthorized());
    EXPECT_TRUE(session().canAuthorize());
    EXPECT_TRUE(session().authStart());
    EXPECT_TRUE(session().isAuthorized());
    EXPECT_TRUE(session().authStart());
    EXPECT_EQ(authorization.created, 1);
    ASSERT_EQ(authorization.requests.size(), 1U);
    EXPECT_EQ(authorization.requests[0].right, "system.privilege.admin");
    EXPECT_EQ(authorization.requests[0].interaction, Interaction::allowed);
    EXPECT_FALSE(authorization.requests[0].credentials);
}

TEST_F(AuthorizationSession, AsksAgainAfterTheUserCancelled) {
    authorization.rightsStatus = -60006;
    EXPECT_FALSE(session().authStart());
    EXPECT_FALSE(session().isAuthorized());
    EXPECT_EQ(session().authRef(), nullptr);
    EXPECT_EQ(authorization.held(), 0U);
    EXPECT_THAT(console.lines(), IsEmpty());
    authorization.rightsStatus = 0;
    EXPECT_TRUE(session().authStart());
    EXPECT_EQ(authorization.requests.size(), 2U);
}

TEST_F(AuthorizationSession, KeepsEverythingElseWhenItCouldNotBeStarted) {
    authorization.rightsStatus = -60006;
    EXPECT_FALSE(session().authStart());
    EXPECT_FALSE(session().authStartWithUser("ada", "wrong"));
    EXPECT_TRUE(session().hasGUI());
    EXPECT_THAT(session().userDirectory(), Optional(home));
}

TEST_F(AuthorizationSession, DoesNotStartWhenNothingCanBeCreated) {
    authorization.createStatus = -60008;
    EXPECT_FALSE(session().authStart());
    EXPECT_EQ(session().authRef(), nullptr);
    EXPECT_THAT(authorization.requests, IsEmpty());
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(AuthorizationSession, WithoutDialogsIsRefusedOnTheConsoleOnly) {
    auto* quiet = KZAuthorization::sharedController(WithGUI::no);
    EXPECT_FALSE(quiet->canAuthorize());
    EXPECT_FALSE(quiet->authStart());
    EXPECT_THAT(console.lines(), ElementsAre("Unable to authorize"));
    EXPECT_THAT(newLogEntries(), IsEmpty());
    EXPECT_EQ(authorization.created, 0);
}

TEST_F(AuthorizationSession, StartsWithANameAndAPasswordWithoutAnyDialog) {
    auto* quiet = KZAuthorization::sharedController(WithGUI::no);
    EXPECT_TRUE(quiet->authStartWithUser("ada", "pässword"));
    EXPECT_TRUE(quiet->isAuthorized());
    ASSERT_EQ(authorization.requests.size(), 1U);
    EXPECT_EQ(authorization.requests[0].interaction, Interaction::forbidden);
    EXPECT_EQ(authorization.requests[0].credentials->user, "ada");
    EXPECT_EQ(authorization.requests[0].credentials->password, "pässword");
}

TEST_F(AuthorizationSession, IsReplacedByTheOneOfANameAndAPassword) {
    session().authStart();
    EXPECT_TRUE(session().authStartWithUser("ada", "password"));
    EXPECT_EQ(authorization.created, 2);
    EXPECT_EQ(authorization.held(), 1U);
}

TEST_F(AuthorizationSession, IsGoneOnceANameAndAPasswordWereRefused) {
    session().authStart();
    authorization.rightsStatus = -60005;
    EXPECT_FALSE(session().authStartWithUser("ada", "wrong"));
    EXPECT_FALSE(session().isAuthorized());
    EXPECT_EQ(authorization.held(), 0U);
}

TEST_F(AuthorizationSession, IsGoneOnceNothingCouldBeCreatedForANameAndAPassword) {
    session().authStart();
    authorization.createStatus = -60008;
    EXPECT_FALSE(session().authStartWithUser("ada", "password"));
    EXPECT_FALSE(session().isAuthorized());
    EXPECT_EQ(authorization.held(), 0U);
}

TEST_F(AuthorizationSession, StaysWhenANameOrAPasswordIsMissing) {
    session().authStart();
    EXPECT_FALSE(session().authStartWithUser("ada", std::nullopt));
    EXPECT_TRUE(session().isAuthorized());
}

TEST_F(AuthorizationSession, TakesANameAndAPasswordUpToTheFirstNul) {
    session().authStartWithUser(std::string("ada\0x", 5), std::string("secret\0y", 8));
    ASSERT_EQ(authorization.requests.size(), 1U);
    EXPECT_EQ(authorization.requests[0].credentials->user, "ada");
    EXPECT_EQ(authorization.requests[0].credentials->password, "secret");
}

TEST_F(AuthorizationSession, IsRefusedInSilenceWithoutANameOrAPassword) {
    EXPECT_FALSE(session().authStartWithUser(std::nullopt, "password"));
    EXPECT_FALSE(session().authStartWithUser("ada", std::nullopt));
    EXPECT_FALSE(session().authStartWithUser("", "password"));
    EXPECT_FALSE(session().authStartWithUser("ada", ""));
    EXPECT_EQ(authorization.created, 0);
    EXPECT_THAT(console.lines(), IsEmpty());
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(AuthorizationSession, ReportsAWrongPasswordOnTheConsoleAndInTheLog) {
    authorization.rightsStatus = -60005;
    EXPECT_FALSE(session().authStartWithUser("ada", "wrong"));
    EXPECT_FALSE(session().isAuthorized());
    EXPECT_EQ(authorization.held(), 0U);
    EXPECT_THAT(console.lines(), ElementsAre("Authorization failed. Invalid username or password"));
    EXPECT_THAT(newLogEntries(), ElementsAre("Authorization failed. Invalid username or password"));
}

TEST_F(AuthorizationSession, ReportsOnTheConsoleWhyNothingCouldBeCreated) {
    authorization.createStatus = -60008;
    EXPECT_FALSE(session().authStartWithUser("ada", "password"));
    EXPECT_FALSE(session().isAuthorized());
    EXPECT_THAT(console.lines(), ElementsAre("Unable to create authRef - error -60008"));
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(AuthorizationSession, NeverShowsAPassword) {
    authorization.rightsStatus = -60005;
    session().authStartWithUser("ada", "s3cret!");
    for (const auto& line : console.lines()) {
        EXPECT_THAT(line, ::testing::Not(::testing::HasSubstr("s3cret!")));
    }
    EXPECT_THAT(read(home + "/Library/Logs/Corvane/Files.1.log"), ::testing::Not(::testing::HasSubstr("s3cret!")));
}

TEST_F(AuthorizationSession, EndsTheRights) {
    session().authStart();
    EXPECT_EQ(authorization.held(), 1U);
    session().authEnd();
    EXPECT_EQ(authorization.held(), 0U);
    EXPECT_FALSE(session().isAuthorized());
    session().authEnd();
    EXPECT_TRUE(session().authStart());
}

TEST_F(AuthorizationSession, EndsTheRightsWhenItGoes) {
    session().authStart();
    { const KZAuthorizationReset goes; }
    EXPECT_EQ(authorization.held(), 0U);
}

TEST_F(AuthorizationSession, OfTheSuperuserIsOnlyForgottenInTheEnd) {
    authorization.inherits = true;
    session();
    makeSuperuser();
    session().authEnd();
    EXPECT_EQ(session().authRef(), nullptr);
    EXPECT_EQ(authorization.held(), 1U);
}

TEST_F(AuthorizationSession, IsNeverNeededByTheSuperuser) {
    makeSuperuser();
    auto* quiet = KZAuthorization::sharedController(WithGUI::no);
    EXPECT_TRUE(quiet->isAuthorized());
    EXPECT_TRUE(quiet->canAuthorize());
    EXPECT_TRUE(quiet->authStart());
    EXPECT_TRUE(quiet->authStartWithUser("ada", "password"));
    EXPECT_TRUE(quiet->authStartWithUser(std::nullopt, std::nullopt));
    EXPECT_EQ(authorization.created, 0);
    EXPECT_EQ(quiet->authRef(), nullptr);
}

TEST_F(AuthorizationSession, HandsBackTheRightsThatOthersReplace) {
    session().authStart();
    auto* held = session().authRef();
    const auto before = session().setAuthRef(nullptr);
    EXPECT_EQ(before.get(), held);
    EXPECT_EQ(authorization.held(), 1U);
    EXPECT_FALSE(session().isAuthorized());
}

TEST_F(AuthorizationSession, OfAHostWithoutAdministratorRightsIsRefused) {
    auto host = makeHost();
    host.authorization = nullptr;
    const platform::ScopedHost scope(host);
    EXPECT_FALSE(session().authStart());
    EXPECT_FALSE(session().isAuthorized());
    EXPECT_THAT(console.lines(), IsEmpty());
    EXPECT_FALSE(session().authStartWithUser("ada", "password"));
    EXPECT_THAT(console.lines(), ElementsAre("Unable to create authRef - error -1"));
    EXPECT_EQ(session().authExecTask("/bin/true", {}), -1);
}

}  // namespace
