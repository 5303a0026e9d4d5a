#include "platform/linux/rights/Secret.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

using platform::rights::Secret;

TEST(Secrets, KeepWhatWasPutIn) { EXPECT_EQ(Secret("pass word").view(), "pass word"); }

TEST(Secrets, AreEmptyAtFirst) { EXPECT_TRUE(Secret().empty()); }

TEST(Secrets, TakeTextInTheMiddle) {
    Secret secret("ad");
    secret.insert(1, "bc");
    EXPECT_EQ(secret.view(), "abcd");
}

TEST(Secrets, LetGoOfAPart) {
    Secret secret("abcd");
    secret.erase(1, 2);
    EXPECT_EQ(secret.view(), "ad");
}

TEST(Secrets, OverwriteWhatIsErased) {
    Secret secret("abcd");
    const char* const bytes = secret.view().data();
    secret.erase(1, 3);
    EXPECT_EQ(std::string(bytes, 4), std::string("a\0\0\0", 4));
}

TEST(Secrets, OverwriteEverythingWhenCleared) {
    Secret secret("abcd");
    const char* const bytes = secret.view().data();
    secret.clear();
    EXPECT_EQ(std::string(bytes, 4), std::string(4, '\0'));
}

TEST(Secrets, LeaveNothingBehindWhenMoved) {
    Secret secret("abcd");
    const Secret moved(std::move(secret));
    EXPECT_TRUE(secret.empty());  // NOLINT(bugprone-use-after-move): what is left is the question
    EXPECT_EQ(moved.view(), "abcd");
}

TEST(Secrets, RefuseWhatDoesNotFitAndStayAsTheyWere) {
    Secret secret("abcd");
    EXPECT_FALSE(secret.insert(0, std::string(Secret::capacity, 'x')));
    EXPECT_EQ(secret.view(), "abcd");
}

}  // namespace
