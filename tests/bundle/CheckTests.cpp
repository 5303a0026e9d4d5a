#include "tools/wickfield-bundle/check/Check.h"

#include "tests/bundle/CheckFixture.h"

namespace wickfield_bundle {
namespace {

using testing::Contains;
using testing::ElementsAre;

class Checks : public CheckFixture {
protected:
    Findings check(const std::string& path) {
        const platform::ScopedHost scope(platform::linux_host::services());
        return checkBundle(path);
    }
    std::string whyNoBundle(const std::string& path) {
        const Findings findings = check(path);
        EXPECT_EQ(findings.size(), 1U);
        EXPECT_EQ(findings.front().rule, "not-a-bundle");
        return findings.front().reason;
    }
};

TEST_F(Checks, TellWhatIsNoBundle) {
    EXPECT_EQ(whyNoBundle(around() / "missing.app"), "There is nothing of this name.");
    std::ofstream(around() / "file.app") << "text";
    EXPECT_EQ(whyNoBundle(around() / "file.app"), "It is not a folder.");
    std::filesystem::create_directories(around() / "folder/Contents");
    EXPECT_EQ(whyNoBundle(around() / "folder"), "Its name does not end in \".app\".");
    std::filesystem::create_directory(around() / "empty.app");
    EXPECT_EQ(whyNoBundle(around() / "empty.app"), "It has no folder \"Contents\".");
}

TEST_F(Checks, AskForAnArchiveToBeUnpackedFirst) {
    for (const char* name : {"Echo Installer.zip", "Echo.app.ZIP", "echo.tar.gz", "echo.dmg"}) {
        std::ofstream(around() / name) << "text";
        EXPECT_EQ(whyNoBundle(around() / name), "It is an archive: unpack it first.") << name;
    }
    std::filesystem::create_directory(around() / "folder.zip");
    EXPECT_EQ(whyNoBundle(around() / "folder.zip"), "Its name does not end in \".app\".");
}

TEST_F(Checks, PutFindingsInOrder) {
    write(inTree("b"));
    write(inTree("a"));
    write(inTree("Library/.DS_Store"));
    const Findings findings = check(bundle());
    ASSERT_GE(findings.size(), 5U);
    for (std::size_t index = 1; index < findings.size(); ++index) {
        EXPECT_GE(findings[index - 1].severity, findings[index].severity);
        if (findings[index - 1].severity == findings[index].severity) {
            EXPECT_FALSE(comesBefore(findings[index].place, findings[index - 1].place));
        }
    }
}

TEST_F(Checks, RunEveryRule) {
    write(inTree("Library/.DS_Store"));                     // tree
    write(inTree("Users/User/a"));                          // placeholders
    write(inTree("Library/b"), "", 0600);                   // rights
    link(inTree("Library/c"), "nowhere");                   // links
    write(inTree("Library/d:"));                            // names
    write(inTree("Plugins/e"));                             // destinations
    write("Contents/Resources/postinstall.sh", "if then");  // scripts
    std::vector<std::string> rules;
    for (const Finding& finding : check(bundle())) {
        rules.push_back(finding.rule);
    }
    for (const char* const rule : {"clutter-skipped", "placeholder-case", "mode-private", "link-dangling", "name-colon",
                                   "destination-root", "info-missing", "sizes"}) {
        EXPECT_THAT(rules, Contains(rule));
    }
}

TEST_F(Checks, LookThroughALinkToTheBundle) {
    write(inTree("readme"));
    std::filesystem::create_directory_symlink(bundle(), around() / "Link.app");
    std::vector<std::string> rules;
    for (const Finding& finding : check(around() / "Link.app")) {
        rules.push_back(finding.rule);
    }
    EXPECT_THAT(rules, Contains("tree-top-item"));
}

TEST_F(Checks, StayInTheBundleWhereOneLinkLeadsToAnother) {
    write(inTree("Library/a/file"));
    std::filesystem::create_directory(around() / "elsewhere");
    std::ofstream(around() / "elsewhere/file") << "text\n";
    link(inTree("Library/a/out"), around() / "elsewhere");
    link(inTree("Library/b"), "a");
    const platform::ScopedHost scope(platform::linux_host::services());
    std::vector<std::string> places;
    for (const CheckedItem& item : lookAt(bundle()).items) {
        places.push_back(item.place);
    }
    EXPECT_THAT(places, ElementsAre(inTree("Library/a/file"), inTree("Library/b/file")));
}

TEST_F(Checks, LeaveTheBundleAsItIs) {
    write(inTree("Library/a"));
    write("Contents/Info.plist", "<plist/>");
    const auto before = std::filesystem::last_write_time(bundle() + "/" + treePlace);
    check(bundle());
    EXPECT_EQ(std::filesystem::last_write_time(bundle() + "/" + treePlace), before);
}

TEST_F(Checks, KnowTheItemThatHoldsAPlace) {
    write(inTree("Library/Reverb.vst3/Contents/Info.plist"));
    write(inTree("Library/Reverb 2.vst3/a"));
    const platform::ScopedHost scope(platform::linux_host::services());
    const CheckedBundle checked = lookAt(bundle());
    const auto placeOf = [&](const std::string& path) {
        const CheckedItem* const item = checked.itemAt(inTree(path));
        return item == nullptr ? "" : item->path;
    };
    EXPECT_EQ(placeOf("Library/Reverb.vst3/Contents/Info.plist"), "/Library/Reverb.vst3");
    EXPECT_EQ(placeOf("Library/Reverb.vst3"), "/Library/Reverb.vst3");
    EXPECT_EQ(placeOf("Library/Reverb.vst"), "");
    EXPECT_EQ(placeOf("Library"), "");
    ItemCursor cursor(checked);
    for (const InventoryEntry& entry : checked.contents.entries) {
        EXPECT_EQ(cursor.at(entry.path), checked.itemAt(entry.path)) << entry.path;
    }
}

TEST_F(Checks, ResolveDestinationsForACustomerOfAMac) {
    write(inTree("Users/user/Library/Preferences/a"));
    write(inTree("Users/username/b"));
    write(inTree("Library/c"));
    const platform::ScopedHost scope(platform::linux_host::services());
    std::vector<std::string> destinations;
    for (const CheckedItem& item : lookAt(bundle()).items) {
        destinations.push_back(item.destination);
    }
    EXPECT_THAT(destinations, ElementsAre("/Library/c", "/Users/user/Library/Preferences/a", "/Users/user/name/b"));
}

}  // namespace
}  // namespace wickfield_bundle
