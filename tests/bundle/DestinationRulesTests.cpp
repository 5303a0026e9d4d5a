#include "tests/bundle/CheckFixture.h"

namespace wickfield_bundle {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class DestinationRules : public CheckFixture {};

TEST_F(DestinationRules, FindNothingWrongWithUsualPlaces) {
    for (const char* const folder : {"Library/Audio/Plug-Ins", "Applications", "Users/user/Documents", "Users/Shared",
                                     "usr/local/bin", "opt/reverb", "Users/user"}) {
        write(inTree(folder) + "/Reverb");
    }
    EXPECT_THAT(found(checkDestinations), IsEmpty());
}

TEST_F(DestinationRules, FindFilesInPlaceOfStandardFolders) {
    write(inTree("Users/Shared"));
    write(inTree("Library/Preferences"));
    write(inTree("Users/user/Documents"));
    EXPECT_THAT(found(checkDestinations),
                UnorderedElementsAre(Found{"destination-refused", inTree("Users/Shared")},
                                     Found{"destination-refused", inTree("Library/Preferences")},
                                     Found{"destination-refused", inTree("Users/user/Documents")}));
}

TEST_F(DestinationRules, FindAFileInPlaceOfTheCustomersHome) {
    write(inTree("Users/user"));
    EXPECT_THAT(found(checkDestinations), ElementsAre(Found{"destination-refused", inTree("Users/user")}));
}

TEST_F(DestinationRules, FindTheSystemsOwnPlaces) {
    write(inTree("System/Library/Extensions/a"));
    write(inTree("usr/lib/b"));
    write(inTree("bin/c"));
    write(inTree("private/var/db/d"));
    EXPECT_THAT(found(checkDestinations),
                UnorderedElementsAre(Found{"destination-system", inTree("System/Library/Extensions/a")},
                                     Found{"destination-system", inTree("usr/lib/b")},
                                     Found{"destination-system", inTree("bin/c")},
                                     Found{"destination-system", inTree("private/var/db/d")}));
}

TEST_F(DestinationRules, FindFoldersThatAMacDoesNotHaveAtTheTop) {
    write(inTree("Plugins/a"));
    write(inTree("library/b"));
    EXPECT_THAT(found(checkDestinations), UnorderedElementsAre(Found{"destination-root", inTree("Plugins/a")},
                                                               Found{"destination-root", inTree("library/b")}));
}

TEST_F(DestinationRules, FindOtherDisksAndTemporaryFolders) {
    write(inTree("Volumes/Samples/a"));
    write(inTree("tmp/b"));
    write(inTree("private/var/folders/c"));
    EXPECT_THAT(found(checkDestinations),
                UnorderedElementsAre(Found{"destination-volume", inTree("Volumes/Samples/a")},
                                     Found{"destination-temporary", inTree("tmp/b")},
                                     Found{"destination-temporary", inTree("private/var/folders/c")}));
}

TEST_F(DestinationRules, FindTwoItemsForOnePlaceOnceThePlaceholdersAreReplaced) {
    write(inTree("Users/user/Documents/Reverb.txt"));
    write(inTree("Users/userDocuments/Reverb.txt"));
    EXPECT_THAT(found(checkDestinations),
                ElementsAre(Found{"destination-collision", inTree("Users/userDocuments/Reverb.txt")}));
    EXPECT_THAT(reason(checkDestinations), HasSubstr("\"/Users/user/Documents/Reverb.txt\""));
}

TEST_F(DestinationRules, FindTwoItemsForOnePlaceWhereCaseDoesNotCount) {
    write(inTree("Library/Reverb/Hall"));
    write(inTree("Library/reverb/hall"));
    EXPECT_THAT(found(checkDestinations), ElementsAre(Found{"destination-collision", inTree("Library/reverb/hall")}));
}

TEST_F(DestinationRules, FindAnItemThatIsPutIntoAnother) {
    write(inTree("Users/user/Documents/Reverb"));
    write(inTree("Users/userDocuments/Reverb/Manual"));
    EXPECT_THAT(found(checkDestinations),
                ElementsAre(Found{"destination-collision", inTree("Users/userDocuments/Reverb/Manual")}));
}

TEST_F(DestinationRules, LeaveNamesOfOneFolderToTheRuleAboutNames) {
    write(inTree("Library/Hall"));
    write(inTree("Library/hall"));
    EXPECT_THAT(found(checkDestinations), IsEmpty());
}

TEST_F(DestinationRules, FindNothingWrongWithFoldersThatMeet) {
    write(inTree("Users/user/Documents/Reverb/a"));
    write(inTree("Users/userDocuments/Reverb/b"));
    EXPECT_THAT(found(checkDestinations), IsEmpty());
}

}  // namespace
}  // namespace wickfield_bundle
