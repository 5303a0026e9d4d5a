#include "tools/wickfield-bundle/project/ProjectOptions.h"

#include <unistd.h>

#include "tests/bundle/CreateFixture.h"
#include "tools/wickfield-bundle/project/ProjectFile.h"

namespace {

using commandline::Arguments;
using commandline::UsageError;
using wickfield_bundle::Project;

// Another working folder until the end of the scope.
class WorkingFolder {
public:
    explicit WorkingFolder(const std::string& folder) { std::filesystem::current_path(folder); }
    ~WorkingFolder() { std::filesystem::current_path(m_before); }
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;

private:
    std::filesystem::path m_before = std::filesystem::current_path();
};

class ProjectOptions : public CreateFixture {
protected:
    static Project project(const std::vector<std::string>& words) {
        return wickfield_bundle::projectByOptions(Arguments(words, wickfield_bundle::projectOptions()));
    }

    WorkingFolder here{place.path()};
};

TEST_F(ProjectOptions, DescribeAWholeProject) {
    const Project project = this->project({"--name",
                                           "Brook",
                                           "--version=1.3",
                                           "--author",
                                           "Fenwick",
                                           "--identifier",
                                           "com.example.brook",
                                           "--agreement",
                                           "a.rtf",
                                           "--background",
                                           "b.png",
                                           "--preinstall",
                                           "p.sh",
                                           "--postinstall",
                                           "q.sh",
                                           "--no-branding",
                                           "--tree",
                                           "tree",
                                           "--item",
                                           "x=/Library/x",
                                           "-i",
                                           "y=/Library/y"});
    EXPECT_EQ(project.name + "|" + project.version + "|" + project.author + "|" + project.identifier,
              "Brook|1.3|Fenwick|com.example.brook");
    EXPECT_EQ(project.agreement, "a.rtf");
    EXPECT_EQ(project.background, "b.png");
    EXPECT_EQ(project.preinstall, "p.sh");
    EXPECT_EQ(project.postinstall, "q.sh");
    EXPECT_EQ(project.tree, "tree");
    EXPECT_TRUE(project.removesBranding);
    ASSERT_EQ(project.items.size(), 2U);
    EXPECT_EQ(project.items[1].source + "|" + project.items[1].destination, "y|/Library/y");
}

TEST_F(ProjectOptions, WinOverTheProjectFile) {
    write("p.json", R"({"name": "Brook", "version": "1.3", "tree": "tree"})");
    const Project project = this->project({"--project", "p.json", "--version", "2.0"});
    EXPECT_EQ(project.name + "|" + project.version + "|" + project.tree.value_or(""), "Brook|2.0|tree");
}

TEST_F(ProjectOptions, AddItemsToThoseOfTheProjectFile) {
    write("p.json", R"({"items": [{"source": "x", "destination": "/Library/x"}]})");
    EXPECT_EQ(project({"--project", "p.json", "--item", "y=/Library/y"}).items.size(), 2U);
}

TEST_F(ProjectOptions, TakePathsFromTheWorkingFolderAndThoseOfAFileFromItsOwn) {
    write("sub/p.json", R"({"agreement": "a.rtf", "background": "b.png"})");
    const Project project = this->project({"--project", "sub/p.json", "--background", "c.png"});
    EXPECT_EQ(project.agreement, "sub/a.rtf");
    EXPECT_EQ(project.background, "c.png");
}

TEST_F(ProjectOptions, ReadTheUsualFileWhenTheyNameNothingToInstall) {
    write("wickfield.json", R"({"name": "Brook"})");
    EXPECT_EQ(project({}).name, "Brook");
    EXPECT_EQ(project({"--version", "2"}).name, "Brook");
    EXPECT_EQ(project({"--item", "x=/Library/x"}).name, "");
    EXPECT_EQ(project({"--tree", "tree"}).name, "");
}

TEST_F(ProjectOptions, DoWithoutTheUsualFileButNotWithoutOneThatIsNamed) {
    EXPECT_EQ(project({}).name, "");
    EXPECT_THROW(project({"--project", "none.json"}), wickfield_bundle::ProjectProblems);
}

TEST_F(ProjectOptions, RefuseAnEmptyPath) { EXPECT_THROW(project({"--tree", ""}), UsageError); }

TEST(ItemOption, IsCutAtTheLastEqualsSignBeforeASlash) {
    const auto item = [](const std::string& text) {
        const auto parts = wickfield_bundle::itemOfOption(text);
        return parts.source + "|" + parts.destination;
    };
    EXPECT_EQ(item("x=/Library/x"), "x|/Library/x");
    EXPECT_EQ(item("a=b/c=/Library/x"), "a=b/c|/Library/x");
    EXPECT_EQ(item("a=/b=/Library/x"), "a=/b|/Library/x");
    EXPECT_EQ(item("x=/Library/k=v"), "x|/Library/k=v");
}

TEST(ItemOption, IsRefusedWithoutASourceOrAnAbsoluteDestination) {
    for (const char* const text : {"", "x", "x=", "x=Library/x", "=/Library/x", "/Library/x"}) {
        EXPECT_THROW(wickfield_bundle::itemOfOption(text), UsageError) << text;
    }
}

}  // namespace
