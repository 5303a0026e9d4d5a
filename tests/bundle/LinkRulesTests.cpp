#include "tests/bundle/CheckFixture.h"

namespace wickfield_bundle {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class LinkRules : public CheckFixture {};

TEST_F(LinkRules, FindNothingWrongWithLinksWithinAPluginsBundle) {
    const std::string package = inTree("Library/Reverb.vst3/Contents/");
    write(package + "Resources/Versions/2/About.txt");
    link(package + "Resources/Versions/Current", "2");
    link(package + "Resources/About.txt", "Versions/Current/About.txt");
    link(package + "up", "../Contents");
    EXPECT_THAT(found(checkLinks), IsEmpty());
}

TEST_F(LinkRules, FindALinkToNothingInAPluginsBundle) {
    link(inTree("Library/Reverb.vst3/Contents/Current"), "Versions/3");
    EXPECT_THAT(found(checkLinks),
                ElementsAre(Found{"link-dangling-in-package", inTree("Library/Reverb.vst3/Contents/Current")}));
}

TEST_F(LinkRules, FindALinkThatLeavesAPluginsBundle) {
    write(inTree("Library/Shared/presets"));
    link(inTree("Library/Reverb.vst3/near"), "../Shared/presets");
    link(inTree("Library/Reverb.vst3/far"), "/Library/Shared/presets");
    EXPECT_THAT(found(checkLinks),
                UnorderedElementsAre(Found{"link-leaves-package", inTree("Library/Reverb.vst3/near")},
                                     Found{"link-leaves-package", inTree("Library/Reverb.vst3/far")}));
}

TEST_F(LinkRules, FindLinksToTheMachineThatBuiltIt) {
    link(inTree("Library/Reverb.vst3/a"), "/home/ci/reverb/a");
    link(inTree("Library/b"), "/Users/anna/reverb/b");
    link(inTree("Library/c"), bundle() + "/" + inTree("Library/Reverb.vst3"));
    link("Contents/Resources/d.png", "/builds/reverb/d.png");
    EXPECT_THAT(found(checkLinks), UnorderedElementsAre(Found{"link-to-builder", inTree("Library/Reverb.vst3/a")},
                                                        Found{"link-to-builder", inTree("Library/b")},
                                                        Found{"link-to-builder", inTree("Library/c")},
                                                        Found{"link-to-builder", "Contents/Resources/d.png"}));
}

TEST_F(LinkRules, FindLinksThatLeadToThemselves) {
    link(inTree("Library/a"), "b");
    link(inTree("Library/b"), "a");
    link(inTree("Library/Reverb.vst3/c"), "c");
    link("Contents/Resources/d", "d");
    EXPECT_THAT(found(checkLinks),
                UnorderedElementsAre(Found{"link-loop", inTree("Library/a")}, Found{"link-loop", inTree("Library/b")},
                                     Found{"link-loop", inTree("Library/Reverb.vst3/c")},
                                     Found{"link-loop", "Contents/Resources/d"}));
}

TEST_F(LinkRules, FindALinkThatClimbsAboveTheTop) {
    link(inTree("Library/a"), "../../../x");
    EXPECT_THAT(found(checkLinks), ElementsAre(Found{"link-leaves-tree", inTree("Library/a")}));
}

TEST_F(LinkRules, FindALinkThatDependsOnTheOrderOfTheInstallation) {
    write(inTree("Library/Reverb/Reverb 2.txt"));
    write(inTree("Library/Reverb.vst3/Contents/Info.plist"));
    link(inTree("Library/Reverb/Reverb.txt"), "Reverb 2.txt");
    link(inTree("Library/Reverb/absolute.txt"), "/Library/Reverb/Reverb 2.txt");
    link(inTree("Library/Reverb/info"), "../Reverb.vst3/Contents/Info.plist");
    EXPECT_THAT(found(checkLinks), UnorderedElementsAre(Found{"link-order", inTree("Library/Reverb/Reverb.txt")},
                                                        Found{"link-order", inTree("Library/Reverb/absolute.txt")},
                                                        Found{"link-order", inTree("Library/Reverb/info")}));
}

TEST_F(LinkRules, FollowALinkToWhereItsTargetIsPut) {
    write(inTree("Users/user/Documents/a"));
    link(inTree("Users/userDocuments/b"), "a");  // is put beside it, because of what its folder's name begins with
    EXPECT_THAT(found(checkLinks), ElementsAre(Found{"link-order", inTree("Users/userDocuments/b")}));
}

TEST_F(LinkRules, KnowThatWhatLiesBeyondALinkToAFolderIsInstalledThere) {
    write(inTree("Library/Echo.framework/Versions/A/Echo"));
    link(inTree("Library/Echo.framework/Versions/Current"), "A");
    link(inTree("Library/Echo.framework/Echo"), "Versions/Current/Echo");
    EXPECT_THAT(found(checkLinks),
                UnorderedElementsAre(Found{"link-order", inTree("Library/Echo.framework/Echo")},
                                     Found{"link-followed", inTree("Library/Echo.framework/Versions/Current")}));
}

TEST_F(LinkRules, FindALinkToWhatIsNeitherThereNorInstalled) {
    write(inTree("Library/Reverb.vst3/Contents/Info.plist"));
    link(inTree("Library/a"), "gone");
    link(inTree("Library/b"), "Reverb.vst3/Contents/gone");
    link("Contents/Resources/c.png", "gone.png");
    EXPECT_THAT(found(checkLinks), UnorderedElementsAre(Found{"link-dangling", inTree("Library/a")},
                                                        Found{"link-dangling", inTree("Library/b")},
                                                        Found{"link-dangling", "Contents/Resources/c.png"}));
}

TEST_F(LinkRules, FindAPlaceholderInALinkWhichNobodyReplaces) {
    write(inTree("Users/user/Documents/a"));
    link(inTree("Library/a"), "/Users/user/Documents/a");
    EXPECT_THAT(found(checkLinks), ElementsAre(Found{"link-dangling", inTree("Library/a")}));
    EXPECT_THAT(reason(checkLinks), HasSubstr("placeholder"));
}

TEST_F(LinkRules, FindALinkToWhatACustomerMayNotHave) {
    link(inTree("Library/a"), "/Library/Frameworks/Other.framework/Other");
    EXPECT_THAT(found(checkLinks), ElementsAre(Found{"link-outside", inTree("Library/a")}));
}

TEST_F(LinkRules, FindALinkToAFolderThatIsCopiedInsteadOfLinked) {
    write(inTree("Library/Reverb/2/a"));
    link(inTree("Library/Reverb/Current"), "2");
    EXPECT_THAT(found(checkLinks), ElementsAre(Found{"link-followed", inTree("Library/Reverb/Current")}));
}

TEST_F(LinkRules, FindALinkToAFolderThatIsNotInTheBundle) {
    folder("Contents/Resources/Extras");
    link(inTree("Library/a"), "../../Extras");
    link(inTree("Library/b"), "/usr");
    link(inTree("Library/c"), "../../../../..");
    EXPECT_THAT(found(checkLinks), UnorderedElementsAre(Found{"link-followed", inTree("Library/a")},
                                                        Found{"link-folder-outside", inTree("Library/b")},
                                                        Found{"link-folder-outside", inTree("Library/c")}));
}

TEST_F(LinkRules, FindNothingWrongWithALinkToAFolderAboveIt) {
    write(inTree("Library/Reverb/a"));
    link(inTree("Library/Reverb/up"), "..");
    EXPECT_THAT(found(checkLinks), IsEmpty());
}

TEST_F(LinkRules, FindALinkOfTheInstallersThatLeavesTheBundle) {
    link("Contents/Resources/Agreement.rtf", "../../../Agreement.rtf");
    link("Contents/Resources/Icon.icns", "/System/Icon.icns");
    EXPECT_THAT(found(checkLinks), UnorderedElementsAre(Found{"link-leaves-bundle", "Contents/Resources/Agreement.rtf"},
                                                        Found{"link-leaves-bundle", "Contents/Resources/Icon.icns"}));
}

}  // namespace
}  // namespace wickfield_bundle
