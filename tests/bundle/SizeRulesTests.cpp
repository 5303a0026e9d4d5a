#include <sys/xattr.h>

#include "tests/bundle/CheckFixture.h"

namespace wickfield_bundle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class SizeRules : public CheckFixture {};

TEST_F(SizeRules, CountWhatIsInstalled) {
    write(inTree("Library/a"), std::string(100, 'a'));
    write(inTree("Library/Reverb.vst3/one"), std::string(2000, 'b'));
    write(inTree("Library/Reverb.vst3/two"), std::string(24, 'c'));
    write(inTree("Library/.skipped"), std::string(5000, 'd'));
    write("Contents/Resources/Agreement.rtf", std::string(5000, 'd'));
    EXPECT_THAT(found(checkSizes), ElementsAre(Found{"sizes", treePlace}));
    EXPECT_EQ(reason(checkSizes),
              "2 items with 3 files and 2.07 KB in all; the largest file is \"Library/Reverb.vst3/one\" with 1.95 KB.");
}

TEST_F(SizeRules, SayNothingOfAnEmptyTree) { EXPECT_THAT(found(checkSizes), IsEmpty()); }

TEST_F(SizeRules, FindAFileThatManyDisksAndArchiversCannotHold) {
    write(inTree("Library/limit"));
    write(inTree("Library/huge"));
    std::filesystem::resize_file(bundle() + "/" + inTree("Library/limit"), 0xFFFFFFFFULL);  // without taking space
    std::filesystem::resize_file(bundle() + "/" + inTree("Library/huge"), 0x100000000ULL);
    EXPECT_THAT(found(checkSizes),
                UnorderedElementsAre(Found{"file-huge", inTree("Library/huge")}, Found{"sizes", treePlace}));
}

class QuarantineRules : public CheckFixture {
protected:
    bool mark(const std::string& place) {
        return ::setxattr((bundle() + "/" + place).c_str(), "user.com.apple.quarantine", "0081", 4, 0) == 0;
    }
};

TEST_F(QuarantineRules, FindTheMarkOfADownloadAndOfAFolderOnlyTheFolders) {
    write(inTree("Library/Reverb.vst3/Contents/Info.plist"));
    write(inTree("Library/a"));
    write(inTree("Library/b"));
    if (!mark(inTree("Library/a"))) {
        GTEST_SKIP() << "the file system has no attributes";
    }
    ASSERT_TRUE(mark(inTree("Library/Reverb.vst3")));
    ASSERT_TRUE(mark(inTree("Library/Reverb.vst3/Contents/Info.plist")));
    EXPECT_THAT(found(checkQuarantine), UnorderedElementsAre(Found{"quarantined", inTree("Library/a")},
                                                             Found{"quarantined", inTree("Library/Reverb.vst3")}));
}

}  // namespace
}  // namespace wickfield_bundle
