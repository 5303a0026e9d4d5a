#include "app/InstallationTree.h"

#include <map>
#include <vector>

#include "tests/app/AppFixture.h"

namespace {

class Tree : public AppFixture {
protected:
    using Items = std::map<std::string, std::string>;  // sources by paths

    void visit(const std::string& folder) {
        seen.clear();
        hidden.clear();
        finished = InstallationTree::visitItems(
            folder, tree(),
            [this](const InstallationTree::Item& item) { return seen.emplace(item.path, item.source).second; },
            [this](const InstallationTree::Item& item) { hidden.emplace(item.path, item.source); });
    }

    Items seen;
    Items hidden;
    bool finished = false;
};

TEST_F(Tree, HasItsItemsBelowTheDisksRoot) {
    write(tree() + "/Library/one", "1");
    write(tree() + "/Library/a/two", "2");
    visit(tree());
    EXPECT_TRUE(finished);
    EXPECT_EQ(seen, (Items{{"/Library/one", tree() + "/Library/one"}, {"/Library/a/two", tree() + "/Library/a/two"}}));
}

TEST_F(Tree, HasNoLeadingSlashForAFileAtItsTop) {
    write(tree() + "/bare", "1");
    visit(tree());
    EXPECT_EQ(seen, (Items{{"bare", tree() + "/bare"}}));
}

TEST_F(Tree, CanBeVisitedFromAFolderWithinIt) {
    write(tree() + "/Library/a/one", "1");
    write(tree() + "/Users/two", "2");
    visit(tree() + "/Library");
    EXPECT_EQ(seen, (Items{{"/Library/a/one", tree() + "/Library/a/one"}}));
}

TEST_F(Tree, HasAPackageAsOneItem) {
    write(tree() + "/Library/Plug.vst3/Contents/one", "1");
    visit(tree());
    EXPECT_EQ(seen, (Items{{"/Library/Plug.vst3", tree() + "/Library/Plug.vst3"}}));
}

TEST_F(Tree, TellsOfWhatItPassesOver) {
    write(tree() + "/a/.DS_Store", "");
    write(tree() + "/a/.Plug.vst3/Contents/one", "1");
    write(tree() + "/.b/one", "1");
    visit(tree());
    EXPECT_EQ(seen, (Items{{"/.b/one", tree() + "/.b/one"}}));
    EXPECT_EQ(hidden, (Items{{"/a/.DS_Store", tree() + "/a/.DS_Store"}, {"/a/.Plug.vst3", tree() + "/a/.Plug.vst3"}}));
}

TEST_F(Tree, NeedsNobodyToTell) {
    write(tree() + "/a/.hidden", "");
    write(tree() + "/a/one", "");
    int count = 0;
    EXPECT_TRUE(
        InstallationTree::visitItems(tree(), tree(), [&](const InstallationTree::Item&) { return ++count > 0; }));
    EXPECT_EQ(count, 1);
}

TEST_F(Tree, IsLeftAtTheFirstItemThatIsRefused) {
    for (const auto* each : {"a/one", "b/two", "c/d/three"}) {
        write(tree() + "/" + each, "x");
    }
    int count = 0;
    EXPECT_FALSE(InstallationTree::visitItems(tree(), tree(), [&](const InstallationTree::Item&) {
        ++count;
        return false;
    }));
    EXPECT_EQ(count, 1);
}

TEST_F(Tree, HasALinkBackToAFolderOnTheWayAsTheLink) {
    write(tree() + "/a/b/one", "1");
    fs::create_directory_symlink("../..", tree() + "/a/b/loop");
    fs::create_directory_symlink(tree() + "/a", tree() + "/a/b/.loop");
    visit(tree());
    EXPECT_TRUE(finished);
    EXPECT_EQ(seen, (Items{{"/a/b/loop", tree() + "/a/b/loop"}, {"/a/b/one", tree() + "/a/b/one"}}));
    EXPECT_EQ(hidden, (Items{{"/a/b/.loop", tree() + "/a/b/.loop"}}));
}

TEST_F(Tree, HasWhatALinkToAnotherFolderLeadsTo) {
    write(disk / "shared/one", "1");
    fs::create_directory_symlink(disk / "shared", tree() + "/linked");
    visit(tree());
    EXPECT_EQ(seen, (Items{{"/linked/one", tree() + "/linked/one"}}));
}

class ClosedFolder : public InstallationTree::Folders {
public:
    std::optional<std::vector<platform::DirectoryEntry>> contents(const std::string& folder) override {
        return folder.ends_with("/a") ? std::nullopt : Folders::contents(folder);
    }
};

TEST_F(Tree, HasNoItemsInAFolderThatIsNotToBeEntered) {
    write(tree() + "/Library/a/one", "1");
    write(tree() + "/Library/b/two", "2");
    Items found;
    ClosedFolder closed;
    const bool all = InstallationTree::visitItems(closed, tree(), tree(), [&](const InstallationTree::Item& item) {
        return found.emplace(item.path, item.source).second;
    });
    EXPECT_TRUE(all);
    EXPECT_EQ(found, (Items{{"/Library/b/two", tree() + "/Library/b/two"}}));
}

class Boxes : public InstallationTree::Folders {
public:
    bool isPackage(const std::string& folder) override { return folder.ends_with(".box"); }
};

TEST_F(Tree, HasAsOneItemWhatIsCalledAPackage) {
    write(tree() + "/Library/a.box/one", "1");
    write(tree() + "/Library/b.vst3/two", "2");
    Boxes boxes;
    Items found;
    InstallationTree::visitItems(boxes, tree(), tree(), [&](const InstallationTree::Item& item) {
        return found.emplace(item.path, item.source).second;
    });
    EXPECT_EQ(found, (Items{{"/Library/a.box", tree() + "/Library/a.box"},
                            {"/Library/b.vst3/two", tree() + "/Library/b.vst3/two"}}));
}

TEST_F(Tree, HasNoItemsWhereThereIsNone) {
    visit(tree() + "/nowhere");
    EXPECT_TRUE(finished);
    EXPECT_TRUE(seen.empty());
}

}  // namespace
