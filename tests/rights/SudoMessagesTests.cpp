#include "platform/linux/rights/SudoMessages.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using platform::rights::After;
using platform::rights::detailsIn;
using platform::rights::Ending;
using platform::rights::endingIn;
using Lines = std::vector<std::string>;

TEST(SudosLastWords, SayThatTheAttemptsAreUsedUp) {
    EXPECT_EQ(endingIn({"sudo: 3 incorrect password attempts"}), Ending::lockedOut);
    EXPECT_EQ(endingIn({"sudo: 1 incorrect password attempt"}), Ending::lockedOut);
}

TEST(SudosLastWords, SayThatAnAccountMayNot) {
    EXPECT_EQ(endingIn({"bob is not in the sudoers file."}), Ending::notAdministrator);
    EXPECT_EQ(endingIn({"bob is not in the sudoers file.  This incident will be reported."}), Ending::notAdministrator);
    EXPECT_EQ(endingIn({"Sorry, user bob is not allowed to execute '/proc/1/fd/3' as root on host."}),
              Ending::notAdministrator);
    EXPECT_EQ(endingIn({"Sorry, user bob may not run sudo on host."}), Ending::notAdministrator);
}

TEST(SudosLastWords, SayThatNobodyAnsweredInTime) {
    EXPECT_EQ(endingIn({"sudo: timed out reading password", "sudo: a password is required"}), Ending::timedOut);
    EXPECT_EQ(endingIn({"sudo: timed out reading password", "sudo: 1 incorrect password attempt"}), Ending::timedOut);
}

TEST(SudosLastWords, MayMeanAnythingElse) {
    EXPECT_EQ(endingIn({"sudo: sorry, you must have a tty to run sudo"}), Ending::other);
    EXPECT_EQ(endingIn({}), Ending::other);
}

TEST(SusLastWords, TellAWrongPasswordFromAnAccountThatMayNot) {
    EXPECT_EQ(endingIn({"su: Authentication failure"}), Ending::wrongPassword);
    EXPECT_EQ(endingIn({"su: Permission denied"}), Ending::notAdministrator);
    EXPECT_EQ(endingIn({"su: using restricted shell /usr/sbin/nologin", "This account is currently not available."}),
              Ending::notAdministrator);
}

TEST(WhatAUserReads, HasNoNamesOfPrograms) {
    EXPECT_EQ(detailsIn({"sudo: 3 incorrect password attempts"}, After::nothing), "3 incorrect password attempts");
    EXPECT_EQ(detailsIn({"su: Permission denied"}, After::nothing), "Permission denied");
}

TEST(WhatAUserReads, LeavesOutWhatThePromptSaysByItself) {
    EXPECT_EQ(detailsIn({"Sorry, try again."}, After::wrongPassword), "");
    EXPECT_EQ(detailsIn({"sudo: no password was provided", "sudo: a password is required"}, After::nothing), "");
    EXPECT_EQ(detailsIn({"sudo: unable to resolve host box: Name or service not known"}, After::nothing), "");
}

TEST(WhatAUserReads, HoldsWhatPamSays) {
    EXPECT_EQ(
        detailsIn({"Sorry, try again.", "The account is locked due to 3 failed logins.", "(10 minutes left to unlock)"},
                  After::wrongPassword),
        "The account is locked due to 3 failed logins.\n(10 minutes left to unlock)");
}

TEST(WhatAUserReads, HoldsNoInsult) {
    EXPECT_EQ(detailsIn({"Where did you learn to type?"}, After::wrongPassword), "");
    EXPECT_EQ(detailsIn({"Where did you learn to type?", "The account is locked."}, After::wrongPassword),
              "The account is locked.");
}

TEST(WhatAUserReads, HoldsNoLecture) {
    EXPECT_EQ(
        detailsIn({"Before.", "We trust you have received the usual lecture from the local System",
                   "Administrator. It usually boils down to these three things:", "#1) Respect the privacy of others.",
                   "#2) Think before you type.", "#3) With great power comes great responsibility.",
                   "For security reasons, the password you type will not be visible.", "After."},
                  After::nothing),
        "Before.\nAfter.");
}

TEST(WhatAUserReads, HoldsTheWordsOfTheMachinesOwnAdministrator) {
    EXPECT_EQ(detailsIn({"Ask Alice before you install anything."}, After::nothing),
              "Ask Alice before you install anything.");
}

TEST(WhatAUserReads, StaysSmall) {
    EXPECT_LE(detailsIn(Lines(1000, std::string(1000, 'x')), After::nothing).size(), 6U * 201U);
}

TEST(WhatAUserReads, IsNotCutInTheMiddleOfACharacter) {
    std::string text(199, 'x');
    text += "\xc3\xa4 and more";
    EXPECT_EQ(detailsIn({text}, After::nothing), std::string(199, 'x'));
}

}  // namespace
