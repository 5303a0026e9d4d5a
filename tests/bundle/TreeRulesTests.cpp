#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "tests/bundle/CheckFixture.h"

namespace wickfield_bundle {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class TreeRules : public CheckFixture {};

TEST_F(TreeRules, FindNothingInATreeThatIsAsItShouldBe) {
    write(inTree("Library/Audio/Plug-Ins/VST3/Reverb.vst3/Contents/Info.plist"));
    write(inTree("Users/user/Documents/Manual.html"));
    EXPECT_THAT(found(checkTree), IsEmpty());
}

TEST_F(TreeRules, FindThatTheTreeIsMissing) {
    std::filesystem::remove(bundle() + "/" + treePlace);
    EXPECT_THAT(found(checkTree), ElementsAre(Found{"tree-missing", treePlace}));
}

TEST_F(TreeRules, FindThatTheTreeIsAFile) {
    std::filesystem::remove(bundle() + "/" + treePlace);
    write(treePlace);
    EXPECT_THAT(found(checkTree), ElementsAre(Found{"tree-not-a-folder", treePlace}));
}

TEST_F(TreeRules, FindThatTheTreeIsALinkToNothing) {
    std::filesystem::remove(bundle() + "/" + treePlace);
    link(treePlace, "nowhere");
    EXPECT_THAT(found(checkTree), ElementsAre(Found{"tree-not-a-folder", treePlace}));
}

TEST_F(TreeRules, FindThatThereIsNothingToInstall) {
    EXPECT_THAT(found(checkTree), ElementsAre(Found{"tree-empty", treePlace}));
}

TEST_F(TreeRules, FindThatWhatThereIsIsNotInstalled) {
    write(inTree("Library/.DS_Store"));
    EXPECT_THAT(found(checkTree), UnorderedElementsAre(Found{"tree-empty", treePlace},
                                                       Found{"clutter-skipped", inTree("Library/.DS_Store")},
                                                       Found{"folder-without-items", inTree("Library")}));
}

TEST_F(TreeRules, FindAFileAtTheTop) {
    write(inTree("readme.txt"));
    EXPECT_THAT(found(checkTree), ElementsAre(Found{"tree-top-item", inTree("readme.txt")}));
    EXPECT_THAT(reason(checkTree), HasSubstr("\"readme.txt\""));
}

TEST_F(TreeRules, FindAPluginsBundleAtTheTop) {
    write(inTree("Reverb.vst3/Contents/Info.plist"));
    EXPECT_THAT(found(checkTree), ElementsAre(Found{"tree-top-item", inTree("Reverb.vst3")}));
}

TEST_F(TreeRules, FindAHiddenFileThatTheCustomerWillMiss) {
    write(inTree("Library/Reverb/.license"));
    write(inTree("Library/Reverb/presets"));
    EXPECT_THAT(found(checkTree), ElementsAre(Found{"hidden-skipped", inTree("Library/Reverb/.license")}));
    EXPECT_THAT(reason(checkTree), HasSubstr("\"/Library/Reverb/.license\""));
}

TEST_F(TreeRules, FindAHiddenBundleThatIsSkippedWhole) {
    write(inTree("Library/.Reverb.vst3/Contents/Info.plist"));
    write(inTree("Library/presets"));
    EXPECT_THAT(found(checkTree), ElementsAre(Found{"hidden-skipped", inTree("Library/.Reverb.vst3")}));
}

TEST_F(TreeRules, FindNothingWrongWithAHiddenFolderWhichIsInstalled) {
    write(inTree("Users/user/.reverb/cache"));
    EXPECT_THAT(found(checkTree), IsEmpty());
}

TEST_F(TreeRules, FindWhatAFileBrowserLeftBehindAsANote) {
    write(inTree("Library/a"));
    write(inTree("Library/.DS_Store"));
    write(inTree("Library/._a"));
    EXPECT_THAT(found(checkTree), UnorderedElementsAre(Found{"clutter-skipped", inTree("Library/.DS_Store")},
                                                       Found{"clutter-skipped", inTree("Library/._a")}));
}

TEST_F(TreeRules, FindLeftoversThatWouldBeInstalled) {
    write(inTree("Library/Thumbs.db"));
    write(inTree("Library/__MACOSX/a"));
    write(inTree("Library/Reverb/.git/HEAD"));
    write(inTree("Library/Reverb/.git/objects/00/11"));
    write(inTree("Library/Reverb.vst3/Contents/.DS_Store"));
    EXPECT_THAT(found(checkTree),
                UnorderedElementsAre(Found{"clutter-installed", inTree("Library/Thumbs.db")},
                                     Found{"clutter-installed", inTree("Library/__MACOSX")},
                                     Found{"clutter-installed", inTree("Library/Reverb/.git")},
                                     Found{"clutter-installed", inTree("Library/Reverb.vst3/Contents/.DS_Store")}));
}

TEST_F(TreeRules, FindTheOutermostFolderThatIsNotMade) {
    write(inTree("Library/a"));
    folder(inTree("Library/Empty/Inner"));
    EXPECT_THAT(found(checkTree), ElementsAre(Found{"folder-without-items", inTree("Library/Empty")}));
}

TEST_F(TreeRules, FindNothingWrongWithAnEmptyFolderInABundleWhichIsCopiedWhole) {
    folder(inTree("Library/Reverb.vst3/Contents/Resources"));
    EXPECT_THAT(found(checkTree), IsEmpty());
}

TEST_F(TreeRules, FindPipesAndSocketsWithoutOpeningThem) {
    write(inTree("Library/a"));
    ASSERT_EQ(::mkfifo((bundle() + "/" + inTree("Library/pipe")).c_str(), 0644), 0);
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(bundle() + "/Contents");  // an address is short
    std::string("socket").copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    std::filesystem::current_path(before);
    ::close(listener);
    EXPECT_THAT(found(checkTree), UnorderedElementsAre(Found{"special-file", inTree("Library/pipe")},
                                                       Found{"special-file", "Contents/socket"}));
}

TEST_F(TreeRules, DoNotWalkOverTheRestOfTheDisk) {
    write(inTree("Library/a"));
    link(inTree("Library/disk"), "/");
    EXPECT_THAT(found(checkTree), IsEmpty());
    std::filesystem::remove_all(bundle() + "/" + treePlace);
    link(treePlace, "/");
    EXPECT_THAT(found(checkTree), ElementsAre(Found{"tree-empty", treePlace}));
}

TEST_F(TreeRules, FindThatLinksMakeTheWalkEndless) {
    // Two ways from each folder to the next: as many ways to the last as there are numbers of 22 bits.
    const int folders = 22;
    for (int number = 0; number < folders; ++number) {
        const std::string name = inTree("Library/" + std::to_string(number));
        folder(name);
        if (number + 1 < folders) {
            link(name + "/left", "../" + std::to_string(number + 1));
            link(name + "/right", "../" + std::to_string(number + 1));
        }
    }
    const std::vector<Found> all = found(checkTree);
    EXPECT_THAT(all, testing::Contains(Found{"tree-endless", treePlace}));
}

}  // namespace
}  // namespace wickfield_bundle
