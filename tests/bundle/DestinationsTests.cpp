#include "tools/wickfield-bundle/create/Destinations.h"

#include "tests/bundle/CreateFixture.h"

namespace {

using ::testing::HasSubstr;

class Destinations : public CreateFixture {
protected:
    Destinations() {
        write("Brook.vst3/Contents/Info.plist");
        write("presets/Hall.preset");
        write("Manual.pdf");
    }

    std::vector<std::string> places() {
        std::vector<std::string> found;
        for (const auto& item : wickfield_bundle::placeItems(project)) {
            found.push_back(item.place);
        }
        return found;
    }
    std::string complaintAboutPlaces() {
        try {
            places();
        } catch (const wickfield_bundle::SenselessProject& problem) {
            return problem.what();
        }
        return "";
    }
    std::string objectionTo(const std::string& source, const std::string& destination) {
        project.items.clear();
        addItem(source, destination);
        return complaintAboutPlaces();
    }
};

TEST_F(Destinations, LoseTheirFirstSlashAndThoseTooMany) {
    addItem("Manual.pdf", "/Library//Docs///Manual.pdf");
    EXPECT_THAT(places(), ::testing::ElementsAre("Library/Docs/Manual.pdf"));
}

TEST_F(Destinations, ThatEndInASlashTakeTheSourcesName) {
    addItem("Brook.vst3", "/Library/Audio/Plug-Ins/VST3/");
    EXPECT_THAT(places(), ::testing::ElementsAre("Library/Audio/Plug-Ins/VST3/Brook.vst3"));
}

TEST_F(Destinations, KeepThePlaceholderAsItStands) {
    addItem("presets", "/Users/user/Documents/Brook");
    EXPECT_THAT(places(), ::testing::ElementsAre("Users/user/Documents/Brook"));
}

TEST_F(Destinations, ComeInTheOrderOfTheirPlaces) {
    addItem("Manual.pdf", "/Library/Brook/Docs/Manual.pdf");
    addItem("presets", "/Library/Brook");
    EXPECT_THAT(places(), ::testing::ElementsAre("Library/Brook", "Library/Brook/Docs/Manual.pdf"));
}

TEST_F(Destinations, AreRefusedWithTheRemedy) {
    EXPECT_THAT(objectionTo("Manual.pdf", "Library/Manual.pdf"), HasSubstr("begins with “/”"));
    EXPECT_THAT(objectionTo("Manual.pdf", "~/Documents/Manual.pdf"), HasSubstr("/Users/user"));
    EXPECT_THAT(objectionTo("Manual.pdf", "/Library/../etc/passwd"), HasSubstr("without “..”"));
    EXPECT_THAT(objectionTo("Manual.pdf", "/Library/./x"), HasSubstr("without “.”"));
    EXPECT_THAT(objectionTo("presets", "//"), HasSubstr("that is the disk itself"));
    EXPECT_THAT(objectionTo("Manual.pdf", "/Manual.pdf"),
                HasSubstr("has to lie in a folder, as in /Library/Manual.pdf"));
    EXPECT_THAT(objectionTo("Brook.vst3", "/"), HasSubstr("that is the disk itself"));
    EXPECT_THAT(objectionTo("Brook.vst3", "/Brook.vst3"), HasSubstr("has to lie in a folder"));
    EXPECT_THAT(objectionTo("Manual.pdf", "/Library/.hidden"), HasSubstr("passes over"));
    EXPECT_THAT(objectionTo("Manual.pdf", "/Library/a\nb"), HasSubstr("control character"));
    EXPECT_THAT(objectionTo("Manual.pdf", "/Library/" + std::string(256, 'n')), HasSubstr("255 bytes"));
    EXPECT_THAT(objectionTo("Manual.pdf", "/Library" + std::string(3000, '/') + std::string(2000, 'n')),
                HasSubstr("too long"));
}

TEST_F(Destinations, MayBeHiddenFoldersAndFoldersAtTheTop) {
    EXPECT_EQ(objectionTo("presets", "/Users/user/.brook"), "");
    EXPECT_EQ(objectionTo("presets", "/Library"), "");
}

TEST_F(Destinations, AreRefusedWhereAPluginBundleWouldComeApart) {
    write("Brook.clap");
    EXPECT_THAT(objectionTo("Brook.vst3", "/Library/Audio/Plug-Ins/VST3"), HasSubstr("end the destination in “/”"));
    EXPECT_THAT(objectionTo("Brook.clap", "/Library/Audio/Plug-Ins/CLAP"), HasSubstr("end the destination in “/”"));
    EXPECT_EQ(objectionTo("Brook.vst3", "/Library/Audio/Plug-Ins/VST3/Other name.vst3"), "");
    EXPECT_EQ(objectionTo("Brook.vst3", "/Applications/Host.app/Contents/PlugIns"), "");
}

TEST_F(Destinations, AreJudgedByTheNamesThatTheInstallerWillSee) {
    EXPECT_THAT(objectionTo("presets", "/Brook.vst3"), HasSubstr("has to lie in a folder"));
    EXPECT_THAT(objectionTo("Manual.pdf", "/Brook.vst3/Contents/Manual.pdf"), HasSubstr("has to lie in a folder"));
    EXPECT_THAT(objectionTo("presets", "/Library/.Brook.vst3"), HasSubstr("passes over"));
    EXPECT_THAT(objectionTo("presets", "/Library/.Brook.vst3/Contents/presets"), HasSubstr("passes over"));
    EXPECT_EQ(objectionTo("Manual.pdf", "/Library/Brook.vst3/Contents/.manual"), "");
}

TEST_F(Destinations, WantANameInThePathWhereTheSourceHasNone) {
    project.items = {{place / "presets/.", "/Library/Brook/"}};
    EXPECT_THAT(complaintAboutPlaces(), HasSubstr("write the name that it is to have behind the “/”"));
}

TEST_F(Destinations, AreRefusedWhenTwoItemsWantOne) {
    addItem("Manual.pdf", "/Library/x");
    addItem("presets", "/Library//x/../x");
    EXPECT_THROW(places(), wickfield_bundle::SenselessProject);
    project.items.back().destination = "/Library//x";
    EXPECT_THROW(places(), wickfield_bundle::SenselessProject);
}

TEST_F(Destinations, AreRefusedWhenTheTreeHasThem) {
    write("tree/Library/Brook/Manual.pdf");
    std::filesystem::create_symlink("nowhere", place / "tree/Library/link");
    project.tree = place / "tree";
    EXPECT_THAT(objectionTo("Manual.pdf", "/Library/Brook/Manual.pdf"), HasSubstr("tree has something there already"));
    EXPECT_THAT(objectionTo("presets", "/Library/Brook"), HasSubstr("tree has something there already"));
    EXPECT_THAT(objectionTo("presets", "/Library/link"), HasSubstr("tree has something there already"));
    EXPECT_THAT(objectionTo("presets", "/Library/Brook/Manual.pdf/presets"), HasSubstr("is no folder"));
    EXPECT_THAT(objectionTo("presets", "/Library/link/presets"), HasSubstr("is no folder"));
    EXPECT_EQ(objectionTo("presets", "/Library/Brook/presets"), "");
}

TEST_F(Destinations, AreRefusedWhenAnotherItemHasThem) {
    addItem("presets", "/Library/Brook");
    addItem("presets", "/Library/Brook-2");
    addItem("Manual.pdf", "/Library/Brook/Hall.preset");
    EXPECT_THAT(complaintAboutPlaces(), HasSubstr("presets” has something there already"));
    project.items.back().destination = "/Library/Brook/Hall.preset/Manual.pdf";
    EXPECT_THAT(complaintAboutPlaces(), HasSubstr("Hall.preset” is no folder"));
    project.items.back().destination = "/Library/Brook/Manual.pdf";
    EXPECT_EQ(complaintAboutPlaces(), "");
    addItem("presets", "/Library/Brook/Manual.pdf/presets");
    EXPECT_THAT(complaintAboutPlaces(), HasSubstr("is no folder"));
}

TEST_F(Destinations, WantASourceThatIsThere) {
    addItem("none", "/Library/none");
    EXPECT_THROW(places(), wickfield_bundle::CreateFailure);
    std::filesystem::create_symlink("nowhere", place / "dangling");
    project.items.clear();
    addItem("dangling", "/Library/none");
    EXPECT_THROW(places(), wickfield_bundle::CreateFailure);
}

}  // namespace
