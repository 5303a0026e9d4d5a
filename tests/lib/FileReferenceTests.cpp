#include "lib/KZFileManager/FileReference.h"

#include "tests/lib/FilesFixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;

namespace {

class FileReferences : public FilesFixture {};

TEST_F(FileReferences, LeadBackToTheirPath) {
    const auto path = add("Plug.vst3/Contents/x");
    const FSRef ref = KZFileManager::stringToFSRef(path);
    const FSRef copy = ref;
    EXPECT_THAT(KZFileManager::stringWithFSRef(&copy), Optional(path));
}

TEST_F(FileReferences, AreEqualForTheSamePath) {
    const auto path = add("x");
    EXPECT_EQ(KZFileManager::stringToFSRef(path).hidden, KZFileManager::stringToFSRef(path).hidden);
}

TEST_F(FileReferences, LeadNowhereOnceTheItemIsGoneOrReplaced) {
    const auto path = add("x");
    const FSRef ref = KZFileManager::stringToFSRef(path);
    std::filesystem::rename(path, disk / "y");
    EXPECT_EQ(KZFileManager::stringWithFSRef(&ref), std::nullopt);
    add("x", "another");
    EXPECT_EQ(KZFileManager::stringWithFSRef(&ref), std::nullopt);
}

TEST_F(FileReferences, OfAMissingItemLeadNowhere) {
    const FSRef ref = KZFileManager::stringToFSRef(disk / "gone");
    EXPECT_EQ(KZFileManager::stringWithFSRef(&ref), std::nullopt);
}

TEST_F(FileReferences, ThatNobodyMadeLeadNowhere) {
    FSRef ref;
    EXPECT_EQ(KZFileManager::stringWithFSRef(&ref), std::nullopt);
    ref.hidden.fill(0xA5);
    EXPECT_EQ(KZFileManager::stringWithFSRef(&ref), std::nullopt);
    EXPECT_EQ(KZFileManager::stringWithFSRef(nullptr), std::nullopt);
}

TEST_F(FileReferences, FromLongAgoAreForgottenInsteadOfMistaken) {
    const auto path = add("first");
    const FSRef ref = KZFileManager::stringToFSRef(path);
    for (const char* name : {"second", "third", "fourth"}) {
        add(name);
        for (std::size_t slashes = 1; slashes <= 1400; ++slashes) {
            KZFileManager::stringToFSRef(disk.path() + std::string(slashes, '/') + name);
        }
    }
    EXPECT_EQ(KZFileManager::stringWithFSRef(&ref), std::nullopt);
}

TEST_F(FileReferences, CarryTheChangedItemToTheFileBrowser) {
    const auto path = add("x");
    KZFileManager::notifyFileSystemChanged(path);
    EXPECT_THAT(workspace.finderUpdates, ElementsAre(Optional(path)));
}

TEST_F(FileReferences, OfNoPathStandForEverything) {
    KZFileManager::notifyFileSystemChanged(std::nullopt);
    EXPECT_THAT(workspace.finderUpdates, ElementsAre(std::nullopt));
}

TEST_F(FileReferences, OfAMissingItemSendNothing) {
    const FSRef ref = KZFileManager::stringToFSRef(disk / "gone");
    EXPECT_EQ(SendFinderSyncEvent(&ref), -43);
    KZFileManager::notifyFileSystemChanged(disk / "gone");
    EXPECT_THAT(workspace.finderUpdates, IsEmpty());
}

TEST_F(FileReferences, ReportTheHostsStatusOfTheRequest) {
    const FSRef ref = KZFileManager::stringToFSRef(add("x"));
    EXPECT_EQ(SendFinderSyncEvent(&ref), 0);
    workspace.finderStatus = -600;
    EXPECT_EQ(SendFinderSyncEvent(&ref), -600);
    EXPECT_EQ(SendFinderSyncEvent(nullptr), -50);
}

}  // namespace
