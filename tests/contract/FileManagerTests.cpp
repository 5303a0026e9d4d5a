// What every file manager promises, the host's own and the one that tests use in its place.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <memory>

#include "HostUnderTest.h"
#include "tests/fakes/FakeFileManager.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

using platform::FileType;
using platform::Intermediates;

class FileManagerUnderTest {
public:
    virtual ~FileManagerUnderTest() = default;
    virtual platform::FileManager& files() = 0;
    virtual std::string root() = 0;
    virtual void link(const std::string& path, const std::string& target) = 0;
};

class RealFiles : public FileManagerUnderTest {
public:
    platform::FileManager& files() override { return m_files; }
    std::string root() override { return m_folder.path(); }
    void link(const std::string& path, const std::string& target) override {
        std::filesystem::create_symlink(target, path);
    }

private:
    fakes::TemporaryFolder m_folder;
    host_under_test::FileManager m_files;
};

class FilesInMemory : public FileManagerUnderTest {
public:
    FilesInMemory() { m_files.addFolder("/root"); }
    platform::FileManager& files() override { return m_files; }
    std::string root() override { return "/root"; }
    void link(const std::string& path, const std::string& target) override { m_files.addLink(path, target); }

private:
    fakes::FakeFileManager m_files;
};

using Maker = std::unique_ptr<FileManagerUnderTest> (*)();

template <class Kind>
std::unique_ptr<FileManagerUnderTest> makeFiles() {
    return std::make_unique<Kind>();
}

class FileManagerContract : public testing::TestWithParam<Maker> {
protected:
    platform::FileManager& files() { return m_subject->files(); }
    std::string at(const std::string& name) { return m_subject->root() + "/" + name; }
    void write(const std::string& name, const std::string& contents) {
        ASSERT_FALSE(files().writeAtomically(at(name), contents));
    }
    void makeFolder(const std::string& name) { ASSERT_FALSE(files().createDirectory(at(name), Intermediates::yes)); }
    void link(const std::string& name, const std::string& target) { m_subject->link(at(name), target); }
    std::optional<std::string> read(const std::string& name) { return files().readFile(at(name), 1000); }
    std::vector<std::string> names(const std::string& folder) {
        std::vector<std::string> found;
        for (const auto& entry :
             files().contentsOfDirectory(at(folder)).value_or(std::vector<platform::DirectoryEntry>{})) {
            found.push_back(entry.name);
        }
        std::sort(found.begin(), found.end());
        return found;
    }

private:
    std::unique_ptr<FileManagerUnderTest> m_subject = GetParam()();
};

TEST_P(FileManagerContract, DanglingLinkDoesNotExistButHasAttributes) {
    link("link", "nowhere");
    EXPECT_FALSE(files().fileExists(at("link")));
    ASSERT_TRUE(files().attributes(at("link")));
    EXPECT_EQ(files().attributes(at("link"))->type, FileType::symbolicLink);
}

TEST_P(FileManagerContract, LinkToAFolderIsAFolder) {
    makeFolder("folder");
    link("link", "folder");
    EXPECT_TRUE(files().isFolder(at("link")));
    EXPECT_EQ(files().identity(at("link")), files().identity(at("folder")));
}

TEST_P(FileManagerContract, LinkThatLeadsToItselfDoesNotExist) {
    link("loop", "loop");
    EXPECT_FALSE(files().fileExists(at("loop")));
    EXPECT_FALSE(files().isFolder(at("loop")));
    EXPECT_EQ(files().destinationOfSymbolicLink(at("loop")), "loop");
}

TEST_P(FileManagerContract, OnlyALinkHasADestination) {
    write("file", "x");
    EXPECT_EQ(files().destinationOfSymbolicLink(at("file")), std::nullopt);
    EXPECT_EQ(files().destinationOfSymbolicLink(at("missing")), std::nullopt);
}

TEST_P(FileManagerContract, MissingItemHasNoAttributesAndNoIdentity) {
    EXPECT_EQ(files().attributes(at("missing")), std::nullopt);
    EXPECT_EQ(files().identity(at("missing")), std::nullopt);
    EXPECT_FALSE(files().isWritable(at("missing")));
}

TEST_P(FileManagerContract, ListsHiddenNamesButNotTheFolderItself) {
    makeFolder("folder/sub");
    write("folder/.hidden", "");
    EXPECT_EQ(names("folder"), (std::vector<std::string>{".hidden", "sub"}));
}

TEST_P(FileManagerContract, ListingAFileOrNothingGivesNone) {
    write("file", "x");
    EXPECT_EQ(files().contentsOfDirectory(at("file")), std::nullopt);
    EXPECT_EQ(files().contentsOfDirectory(at("missing")), std::nullopt);
}

TEST_P(FileManagerContract, VisitTellsNamesKindsAndSizes) {
    makeFolder("folder/sub");
    write("folder/file", "12345");
    link("folder/link", "file");
    std::map<std::string, std::pair<FileType, std::uint64_t>> seen;
    EXPECT_TRUE(
        files().visitDirectory(at("folder"), platform::VisitSizes::yes, [&](const platform::VisitedEntry& entry) {
            seen[std::string(entry.name)] = {entry.type, entry.size};
        }));
    const std::map<std::string, std::pair<FileType, std::uint64_t>> expected{
        {"sub", {FileType::folder, 0}}, {"file", {FileType::regular, 5}}, {"link", {FileType::symbolicLink, 4}}};
    EXPECT_EQ(seen, expected);
}

TEST_P(FileManagerContract, VisitOfAFileOrNothingFails) {
    write("file", "x");
    int visited = 0;
    const auto count = [&](const platform::VisitedEntry&) { ++visited; };
    EXPECT_FALSE(files().visitDirectory(at("file"), platform::VisitSizes::no, count));
    EXPECT_FALSE(files().visitDirectory(at("missing"), platform::VisitSizes::no, count));
    EXPECT_EQ(visited, 0);
}

TEST_P(FileManagerContract, RemovesAFolderWithAllThatLiesInIt) {
    makeFolder("folder/sub/deep");
    write("folder/sub/file", "x");
    EXPECT_FALSE(files().removeItem(at("folder")));
    EXPECT_FALSE(files().fileExists(at("folder")));
}

TEST_P(FileManagerContract, RemovesALinkAndKeepsWhatItLeadsTo) {
    write("file", "kept");
    link("link", "file");
    EXPECT_FALSE(files().removeItem(at("link")));
    EXPECT_EQ(read("file"), "kept");
}

TEST_P(FileManagerContract, RemovingNothingFailsAndNamesThePath) {
    const auto failed = files().removeItem(at("missing"));
    ASSERT_TRUE(failed);
    EXPECT_EQ(failed->code, ENOENT);
    EXPECT_NE(failed->description.find(at("missing")), std::string::npos);
}

// The log's own texts go on behind it.
TEST_P(FileManagerContract, FailureEndsWithoutAFullStop) {
    const auto failed = files().removeItem(at("missing"));
    ASSERT_TRUE(failed);
    EXPECT_FALSE(failed->description.ends_with('.')) << failed->description;
}

TEST_P(FileManagerContract, FolderThatIsThereIsASuccessOnlyWithIntermediates) {
    makeFolder("a/b/c");
    EXPECT_FALSE(files().createDirectory(at("a/b/c"), Intermediates::yes));
    EXPECT_TRUE(files().createDirectory(at("a/b/c"), Intermediates::no));
    EXPECT_TRUE(files().createDirectory(at("x/y"), Intermediates::no));
}

TEST_P(FileManagerContract, FolderIsNotMadeOverOrBelowAFile) {
    write("file", "x");
    EXPECT_TRUE(files().createDirectory(at("file"), Intermediates::yes));
    EXPECT_TRUE(files().createDirectory(at("file/sub"), Intermediates::yes));
    EXPECT_EQ(read("file"), "x");
}

TEST_P(FileManagerContract, CopiesATree) {
    makeFolder("from/sub");
    write("from/sub/file", "text");
    link("from/link", "sub/file");
    EXPECT_FALSE(files().copyItem(at("from"), at("to")));
    EXPECT_EQ(read("to/sub/file"), "text");
    EXPECT_EQ(files().destinationOfSymbolicLink(at("to/link")), "sub/file");
    EXPECT_EQ(read("from/sub/file"), "text");
}

TEST_P(FileManagerContract, CopyNeverReplaces) {
    write("from", "new");
    write("file", "old");
    makeFolder("folder");
    link("dangling", "nowhere");
    for (const char* name : {"file", "folder", "dangling", "from"}) {
        const auto failed = files().copyItem(at("from"), at(name));
        ASSERT_TRUE(failed) << name;
        EXPECT_EQ(failed->code, EEXIST) << name;
    }
    EXPECT_EQ(read("file"), "old");
}

TEST_P(FileManagerContract, CopyOfNothingOrIntoNothingFails) {
    write("from", "x");
    EXPECT_TRUE(files().copyItem(at("missing"), at("to")));
    EXPECT_TRUE(files().copyItem(at("from"), at("missing/to")));
}

TEST_P(FileManagerContract, FolderIsNotCopiedIntoItself) {
    makeFolder("folder/sub");
    EXPECT_TRUE(files().copyItem(at("folder"), at("folder/sub/copy")));
    EXPECT_EQ(names("folder/sub"), std::vector<std::string>());
}

TEST_P(FileManagerContract, CopyIsAnItemOfItsOwn) {
    write("from", "one");
    EXPECT_FALSE(files().copyItem(at("from"), at("to")));
    EXPECT_NE(files().identity(at("from")), files().identity(at("to")));
    write("from", "two");
    EXPECT_EQ(read("to"), "one");
}

TEST_P(FileManagerContract, MovesAFolderWithItsContents) {
    makeFolder("from/sub");
    write("from/sub/file", "text");
    EXPECT_FALSE(files().moveItem(at("from"), at("to")));
    EXPECT_EQ(read("to/sub/file"), "text");
    EXPECT_FALSE(files().fileExists(at("from")));
}

TEST_P(FileManagerContract, MoveNeverReplaces) {
    write("from", "new");
    write("file", "old");
    makeFolder("folder");
    link("dangling", "nowhere");
    for (const char* name : {"file", "folder", "dangling"}) {
        const auto failed = files().moveItem(at("from"), at(name));
        ASSERT_TRUE(failed) << name;
        EXPECT_EQ(failed->code, EEXIST) << name;
    }
    EXPECT_EQ(read("from"), "new");
    EXPECT_EQ(read("file"), "old");
}

TEST_P(FileManagerContract, ClearingALockThatIsNotSetSucceeds) {
    write("file", "x");
    EXPECT_FALSE(files().setImmutable(at("file"), false));
    EXPECT_TRUE(files().setImmutable(at("missing"), false));
}

TEST_P(FileManagerContract, PermissionsAreThoseThatWereSet) {
    write("file", "x");
    EXPECT_FALSE(files().setPermissions(at("file"), 0750));
    EXPECT_EQ(files().attributes(at("file"))->permissions, 0750U);
    EXPECT_TRUE(files().isExecutable(at("file")));
    EXPECT_TRUE(files().setPermissions(at("missing"), 0750));
}

TEST_P(FileManagerContract, CreationDateIsTheOneThatWasSet) {
    write("file", "x");
    const platform::Date date{std::chrono::seconds{1234567890}};
    const auto failed = files().setCreationDate(at("file"), date);
    if (failed && failed->code == EOPNOTSUPP) {
        GTEST_SKIP() << "this file system keeps no extended attributes";
    }
    ASSERT_FALSE(failed) << failed->description;
    EXPECT_EQ(files().attributes(at("file"))->creationDate, date);
}

TEST_P(FileManagerContract, AtomicWriteKeepsTheModeOfTheFileThatItReplaces) {
    write("file", "old");
    ASSERT_FALSE(files().setPermissions(at("file"), 0640));
    write("file", "new");
    EXPECT_EQ(read("file"), "new");
    EXPECT_EQ(files().attributes(at("file"))->permissions, 0640U);
}

TEST_P(FileManagerContract, AtomicWriteThroughALinkKeepsTheLink) {
    write("file", "old");
    link("link", "file");
    write("link", "new");
    EXPECT_EQ(read("file"), "new");
    EXPECT_EQ(files().destinationOfSymbolicLink(at("link")), "file");
}

TEST_P(FileManagerContract, AtomicWriteNeverReplacesAFolder) {
    makeFolder("folder");
    EXPECT_TRUE(files().writeAtomically(at("folder"), "x"));
    EXPECT_TRUE(files().isFolder(at("folder")));
}

TEST_P(FileManagerContract, ReadsUpToTheLimitAndNotBeyond) {
    write("file", std::string("a\0b", 3));
    EXPECT_EQ(files().readFile(at("file"), 3), std::string("a\0b", 3));
    EXPECT_EQ(files().readFile(at("file"), 2), std::nullopt);
    EXPECT_EQ(files().readFile(at("missing"), 3), std::nullopt);
}

TEST_P(FileManagerContract, AppendsToAFileThatIsThereAndNeverMakesOne) {
    write("log", "one ");
    const auto log = files().openForAppending(at("log"));
    ASSERT_TRUE(log);
    EXPECT_FALSE(log->append("two "));
    EXPECT_FALSE(log->append("three"));
    EXPECT_EQ(read("log"), "one two three");
    EXPECT_EQ(files().openForAppending(at("missing")), nullptr);
    EXPECT_FALSE(files().fileExists(at("missing")));
}

INSTANTIATE_TEST_SUITE_P(Host, FileManagerContract, testing::Values(makeFiles<RealFiles>));
INSTANTIATE_TEST_SUITE_P(InMemory, FileManagerContract, testing::Values(makeFiles<FilesInMemory>));

}  // namespace
