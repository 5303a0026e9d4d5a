#include "tests/bundle/CheckFixture.h"

namespace wickfield_bundle {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr const char* information = "Contents/Info.plist";

class LayoutRules : public CheckFixture {
protected:
    LayoutRules() {
        writeInformation(usual);
        write("Contents/MacOS/Reverb Installer", "", 0755);
        write("Contents/Linux/Reverb Installer", "", 0755);
    }
    void writeInformation(const std::string& keys) {
        write(information, "<plist version=\"1.0\"><dict>" + keys + "</dict></plist>");
    }

    const std::string executable = "<key>CFBundleExecutable</key><string>Reverb Installer</string>";
    const std::string identifier = "<key>CFBundleIdentifier</key><string>com.example.reverb</string>";
    const std::string kind = "<key>CFBundlePackageType</key><string>APPL</string>";
    const std::string usual = executable + identifier + kind;
};

TEST_F(LayoutRules, FindNothingWrongWithACompleteInstaller) { EXPECT_THAT(found(checkLayout), IsEmpty()); }

TEST_F(LayoutRules, FindThatThereIsNoProgram) {
    std::filesystem::remove_all(bundle() + "/Contents/MacOS");
    std::filesystem::remove(bundle() + "/Contents/Linux/Reverb Installer");
    EXPECT_THAT(found(checkLayout), ElementsAre(Found{"program-missing", "Contents"}));
}

TEST_F(LayoutRules, FindThatOneHostHasNoProgram) {
    std::filesystem::remove_all(bundle() + "/Contents/Linux");
    EXPECT_THAT(found(checkLayout), ElementsAre(Found{"program-linux-missing", "Contents/Linux"}));
    std::filesystem::remove_all(bundle() + "/Contents/MacOS");
    write("Contents/Linux/Reverb Installer", "", 0755);
    EXPECT_THAT(found(checkLayout), ElementsAre(Found{"program-mac-missing", "Contents/MacOS"}));
}

TEST_F(LayoutRules, FindAProgramThatMayNotBeExecuted) {
    write("Contents/MacOS/Reverb Installer", "", 0644);
    write("Contents/Linux/Reverb Installer", "", 0744);
    EXPECT_THAT(found(checkLayout),
                UnorderedElementsAre(Found{"program-not-executable", "Contents/MacOS/Reverb Installer"},
                                     Found{"program-not-executable", "Contents/Linux/Reverb Installer"}));
}

TEST_F(LayoutRules, FindThatTheInformationIsMissing) {
    std::filesystem::remove(bundle() + "/" + information);
    EXPECT_THAT(found(checkLayout), ElementsAre(Found{"info-missing", information}));
}

TEST_F(LayoutRules, FindInformationThatIsNoPropertyList) {
    for (const char* const text : {"", "nonsense <", "<plist version=\"1.0\"><array/></plist>", "<plist><dict>"}) {
        write(information, text);
        EXPECT_THAT(found(checkLayout), ElementsAre(Found{"info-unreadable", information})) << text;
    }
}

TEST_F(LayoutRules, FindInformationThatIsNoFileWithoutOpeningIt) {
    std::filesystem::remove(bundle() + "/" + information);
    ASSERT_EQ(::mkfifo((bundle() + "/" + information).c_str(), 0644), 0);
    EXPECT_THAT(found(checkLayout), ElementsAre(Found{"info-unreadable", information}));
}

TEST_F(LayoutRules, DoNotReadInformationOfAGigabyte) {
    std::filesystem::resize_file(bundle() + "/" + information, 1U << 30U);
    EXPECT_THAT(found(checkLayout), ElementsAre(Found{"info-unreadable", information}));
    EXPECT_THAT(reason(checkLayout), HasSubstr("1073741824 bytes"));
}

TEST_F(LayoutRules, FindAnExecutableThatIsNotThere) {
    writeInformation(identifier + kind + "<key>CFBundleExecutable</key><string>Other</string>");
    EXPECT_THAT(found(checkLayout),
                ElementsAre(Found{"info-executable", information}, Found{"info-executable", information}));
}

TEST_F(LayoutRules, FindAnExecutableThatIsNotDirectlyInItsFolder) {
    write("Contents/MacOS/tools/ditto", "", 0755);
    write("Contents/Linux/tools/ditto", "", 0755);
    writeInformation(identifier + kind + "<key>CFBundleExecutable</key><string>tools/ditto</string>");
    EXPECT_EQ(found(checkLayout).size(), 2U);
}

TEST_F(LayoutRules, FindValuesOfTheWrongKind) {
    std::filesystem::remove_all(bundle() + "/Contents/Linux");
    write("Contents/Linux/Reverb Installer", "", 0755);
    std::filesystem::remove_all(bundle() + "/Contents/MacOS");
    writeInformation(
        "<key>CFBundleExecutable</key><integer>1</integer><key>CFBundleIdentifier</key><true/>"
        "<key>CFBundlePackageType</key><array/>");
    EXPECT_THAT(
        found(checkLayout),
        UnorderedElementsAre(Found{"program-mac-missing", "Contents/MacOS"}, Found{"info-executable", information},
                             Found{"info-identifier", information}, Found{"info-kind", information}));
}

TEST_F(LayoutRules, FindAnIdentifierWithOtherCharacters) {
    writeInformation(executable + kind + "<key>CFBundleIdentifier</key><string>com.example.my reverb</string>");
    EXPECT_THAT(found(checkLayout), ElementsAre(Found{"info-identifier-characters", information}));
}

TEST_F(LayoutRules, FindABundleThatSaysItIsSomethingElse) {
    writeInformation(executable + identifier + "<key>CFBundlePackageType</key><string>BNDL</string>");
    EXPECT_THAT(found(checkLayout), ElementsAre(Found{"info-kind", information}));
}

}  // namespace
}  // namespace wickfield_bundle
