#include "tests/bundle/CheckFixture.h"
#include "tools/wickfield-bundle/check/BuildersPlaces.h"

namespace wickfield_bundle {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class PlaceholderRules : public CheckFixture {};

TEST_F(PlaceholderRules, FindNothingWrongWithThePlaceholdersThemselves) {
    for (const char* const folder : {"Users/user", "Users/user/Documents/Reverb", "Users/user/Library/Preferences",
                                     "Users/user/Library/Application Support/Reverb", "Users/user/Library/Other",
                                     "Users/Shared/Reverb", "Library/Reverb", "Users/user/Library/PreferencePanes"}) {
        write(inTree(folder) + "/file");
    }
    EXPECT_THAT(found(checkPlaceholders), IsEmpty());
}

TEST_F(PlaceholderRules, FindOneWithOtherCapitals) {
    write(inTree("Users/User/Documents/a"));
    write(inTree("Users/User/Documents/b"));
    EXPECT_THAT(found(checkPlaceholders), ElementsAre(Found{"placeholder-case", inTree("Users/User")}));
}

TEST_F(PlaceholderRules, FindOneWhoseParentHasOtherCapitals) {
    write(inTree("users/user/a"));
    EXPECT_THAT(found(checkPlaceholders), ElementsAre(Found{"placeholder-case", inTree("users/user")}));
}

TEST_F(PlaceholderRules, FindANameThatMerelyBeginsLikeOne) {
    write(inTree("Users/username/a"));
    EXPECT_THAT(found(checkPlaceholders), ElementsAre(Found{"placeholder-by-prefix", inTree("Users/username")}));
    EXPECT_THAT(reason(checkPlaceholders), HasSubstr("\"/Users/user/name/a\""));
}

TEST_F(PlaceholderRules, FindANameThatMerelyBeginsLikeOneOfTheLongerOnes) {
    write(inTree("Users/user/DocumentsOfReverb/a"));
    write(inTree("Users/user/Library/Preferences2/b"));
    EXPECT_THAT(found(checkPlaceholders),
                ElementsAre(Found{"placeholder-by-prefix", inTree("Users/user/DocumentsOfReverb")},
                            Found{"placeholder-by-prefix", inTree("Users/user/Library/Preferences2")}));
}

TEST_F(PlaceholderRules, FindAFileThatMerelyBeginsLikeOne) {
    write(inTree("Users/user.txt"));
    EXPECT_THAT(found(checkPlaceholders), ElementsAre(Found{"placeholder-by-prefix", inTree("Users/user.txt")}));
}

TEST_F(PlaceholderRules, FindTheHomeOfWhoeverBuiltIt) {
    write(inTree("Users/anna/Library/a"));
    write(inTree("Users/anna/Library/b"));
    write(inTree("home/ci/build/c"));
    write(inTree("root/d"));
    EXPECT_THAT(found(checkPlaceholders),
                ElementsAre(Found{"other-home", inTree("Users/anna")}, Found{"other-home", inTree("home/ci")},
                            Found{"other-home", inTree("root")}));
}

TEST_F(PlaceholderRules, FindWhatIsWrittenForAShell) {
    write(inTree("~/Documents/a"));
    write(inTree("Library/$HOME/b"));
    EXPECT_THAT(found(checkPlaceholders), ElementsAre(Found{"placeholder-unknown", inTree("Library/$HOME")},
                                                      Found{"placeholder-unknown", inTree("~")}));
}

TEST(Homes, AreThoseThatCustomersDoNotHave) {
    EXPECT_EQ(homeIn("/Users/anna/x"), "/Users/anna");
    EXPECT_EQ(homeIn("/home/anna"), "/home/anna");
    EXPECT_EQ(homeIn("/root/x/y"), "/root");
    EXPECT_EQ(homeIn("/private/var/root/x"), "/private/var/root");
    EXPECT_EQ(homeIn("/Users/user/x"), "");
    EXPECT_EQ(homeIn("/Users/Shared/x"), "");
    EXPECT_EQ(homeIn("/Users"), "");
    EXPECT_EQ(homeIn("/rooted"), "");
    EXPECT_EQ(homeIn("/Library/home/x"), "");
}

TEST(BuildersPlaces, AreHomesAndFoldersThatBuildsWorkIn) {
    EXPECT_TRUE(isBuildersPlace("/home/ci/x"));
    EXPECT_TRUE(isBuildersPlace("/tmp"));
    EXPECT_TRUE(isBuildersPlace("/builds/project/x"));
    EXPECT_FALSE(isBuildersPlace("/Library/x"));
    EXPECT_FALSE(isBuildersPlace("/tmpfiles"));
}

}  // namespace
}  // namespace wickfield_bundle
