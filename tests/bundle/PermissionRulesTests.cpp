#include "tests/bundle/CheckFixture.h"

namespace wickfield_bundle {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class PermissionRules : public CheckFixture {};

TEST_F(PermissionRules, FindNothingWrongWithUsualRights) {
    write(inTree("Library/a"), "", 0644);
    write(inTree("Library/b"), "", 0755);
    folder(inTree("Library/Reverb.vst3"), 0755);
    EXPECT_THAT(found(checkPermissions), IsEmpty());
}

TEST_F(PermissionRules, FindWhatOthersCannotRead) {
    write(inTree("Library/a"), "", 0640);
    write(inTree("Library/Reverb.vst3/Contents/b"), "", 0644);
    folder(inTree("Library/Reverb.vst3/Contents"), 0700);
    EXPECT_THAT(found(checkPermissions),
                UnorderedElementsAre(Found{"mode-private", inTree("Library/a")},
                                     Found{"mode-private", inTree("Library/Reverb.vst3/Contents")}));
}

TEST_F(PermissionRules, FindAFolderThatOthersMayListButNotEnter) {
    folder(inTree("Library/Reverb.vst3"), 0754);
    EXPECT_THAT(found(checkPermissions), ElementsAre(Found{"mode-private", inTree("Library/Reverb.vst3")}));
    EXPECT_THAT(reason(checkPermissions), HasSubstr("0754"));
}

TEST_F(PermissionRules, LetTheCustomersOwnFilesBePrivate) {
    write(inTree("Users/user/Library/Preferences/a.plist"), "", 0600);
    write(inTree("Users/user/b"), "", 0666);
    EXPECT_THAT(found(checkPermissions), IsEmpty());
}

TEST_F(PermissionRules, LetFoldersBePrivateThatAreMadeAnew) {
    write(inTree("Library/Reverb/a"));
    folder(inTree("Library/Reverb"), 0700);
    EXPECT_THAT(found(checkPermissions), IsEmpty());
}

TEST_F(PermissionRules, FindWhatEverybodyMayChange) {
    write(inTree("Library/a"), "", 0666);
    folder(inTree("Library/Reverb.vst3"), 0777);
    EXPECT_THAT(found(checkPermissions), UnorderedElementsAre(Found{"mode-writable", inTree("Library/a")},
                                                              Found{"mode-writable", inTree("Library/Reverb.vst3")}));
}

TEST_F(PermissionRules, FindItemsThatTheirOwnerMayNotWriteTo) {
    write(inTree("Library/a"), "", 0444);
    write(inTree("Users/user/b"), "", 0555);
    write(inTree("Library/Reverb.vst3/inside"), "", 0444);
    folder(inTree("Library/Delay.vst3"), 0555);
    folder(inTree("Library/on the way"), 0555);
    EXPECT_THAT(found(checkPermissions), UnorderedElementsAre(Found{"mode-read-only", inTree("Library/a")},
                                                              Found{"mode-read-only", inTree("Users/user/b")},
                                                              Found{"mode-read-only", inTree("Library/Delay.vst3")}));
}

TEST_F(PermissionRules, FindProgramsThatRunAsSomebodyElse) {
    write(inTree("Library/a"), "", 04755);
    write(inTree("Users/user/b"), "", 02755);
    EXPECT_THAT(found(checkPermissions), UnorderedElementsAre(Found{"mode-set-id", inTree("Library/a")},
                                                              Found{"mode-set-id", inTree("Users/user/b")}));
}

TEST_F(PermissionRules, FindWhatTheInstallerItselfCannotRead) {
    write(inTree("Users/user/a"), "", 0044);
    write(inTree("Library/Reverb/b"));
    folder(inTree("Library/Reverb"), 0655);
    EXPECT_THAT(found(checkPermissions),
                UnorderedElementsAre(Found{"mode-source-unreadable", inTree("Users/user/a")},
                                     Found{"mode-source-unreadable", inTree("Library/Reverb")}));
    folder(inTree("Library/Reverb"), 0755);
}

TEST_F(PermissionRules, FindPartsOfTheInstallerThatTheirOwnerMayNotRead) {
    write("Contents/Info.plist", "", 0244);
    write("Contents/Linux/Wickfield", "", 0755);
    folder("Contents/Linux", 0455);
    folder(treePlace, 0055);
    EXPECT_THAT(found(checkPermissions), UnorderedElementsAre(Found{"mode-part-unreadable", "Contents/Info.plist"},
                                                              Found{"mode-part-unreadable", "Contents/Linux"},
                                                              Found{"mode-part-unreadable", treePlace}));
    folder(treePlace);
    folder("Contents/Linux");
    EXPECT_EQ(reason(checkPermissions), "Its mode is 0244: macOS does not start the installer.");
}

TEST_F(PermissionRules, WarnOfPartsOfTheInstallerThatOthersMayNotRead) {
    folder("Contents/Resources", 0700);
    EXPECT_THAT(found(checkPermissions), ElementsAre(Found{"mode-part-private", "Contents/Resources"}));
    EXPECT_EQ(reason(checkPermissions),
              "Its mode is 0700: for other users of the computer the installer calls itself damaged.");
}

TEST_F(PermissionRules, LeaveWhatTheInstallerDoesNotReadAlone) {
    write("Contents/Resources/a", "", 0600);
    EXPECT_THAT(found(checkPermissions), IsEmpty());
}

}  // namespace
}  // namespace wickfield_bundle
