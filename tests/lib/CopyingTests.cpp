#include "lib/KZFileManager/Copying.h"

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <stdexcept>

#include "tests/lib/CopyingFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;
using testing::SizeIs;

// A source of so many zeros and destinations that take anything, none of which exist.
class EndlessFiles : public platform::OpenFiles {
public:
    explicit EndlessFiles(std::uint64_t size) : m_size(size) {}

    Opened openForReading(const std::string&) override { return {.file = std::make_unique<File>(m_size, m_size, 1)}; }
    Opened openForWriting(const std::string&) override { return {.file = std::make_unique<File>(0, m_size, 2)}; }
    std::FILE* openStream(const std::string&) override { return nullptr; }
    void closeDescriptor(int) override {}

private:
    class File : public platform::OpenFile {
    public:
        File(std::uint64_t left, std::uint64_t size, std::uint64_t inode)
            : m_left(left), m_size(size), m_inode(inode) {}
        platform::Transfer read(std::span<std::byte> buffer) override {
            const auto bytes = std::min<std::uint64_t>(buffer.size(), m_left);
            m_left -= bytes;
            return {.bytes = static_cast<std::size_t>(bytes)};
        }
        platform::Transfer write(std::span<const std::byte> bytes) override { return {.bytes = bytes.size()}; }
        int seek(std::uint64_t) override { return 0; }
        int truncate() override { return 0; }
        std::optional<std::uint64_t> size() override { return m_size; }
        std::optional<platform::FileIdentity> identity() override {
            return platform::FileIdentity{.device = 0, .inode = m_inode};
        }
        platform::Failure copyAttributesFrom(platform::OpenFile&) override { return {}; }
        int close() override { return 0; }

    private:
        std::uint64_t m_left;
        const std::uint64_t m_size;
        const std::uint64_t m_inode;
    };

    const std::uint64_t m_size;
};

class CopyingWithProgress : public CopyingFixture {};

TEST_F(CopyingWithProgress, PutsTheSameBytesAtEveryDestination) {
    std::string contents(200001, 'x');
    contents[100000] = '\0';
    const std::string source = add("source", contents);

    EXPECT_TRUE(copy(source, {disk / "a", disk / "b", disk / "c"}));
    EXPECT_EQ(read(disk / "a"), contents);
    EXPECT_EQ(read(disk / "b"), contents);
    EXPECT_EQ(read(disk / "c"), contents);
}

TEST_F(CopyingWithProgress, ReadsTheSourceOnceForAllDestinations) {
    const std::string source = add("source", std::string(3 * 65536, 'x'));

    copy(source, {disk / "a", disk / "b", disk / "c"});

    EXPECT_EQ(openFiles.count(OpenOperation::read, source), 4U);  // the last one finds the end
}

TEST_F(CopyingWithProgress, WritesWholeChunksOfSixtyFourKibibytes) {
    const std::string source = add("source", std::string(2 * 65536 + 1, 'x'));

    copy(source, {disk / "a"});

    std::vector<std::uint64_t> sizes;
    for (const auto& call : openFiles.calls()) {
        if (call.operation == OpenOperation::write) {
            sizes.push_back(call.count);
        }
    }
    EXPECT_THAT(sizes, ElementsAre(65536, 65536, 1));
}

TEST_F(CopyingWithProgress, TakesAnEmptyFile) {
    EXPECT_TRUE(copy(add("source", ""), {disk / "a"}));
    EXPECT_TRUE(stands(disk / "a"));
    EXPECT_EQ(finished, 1);
}

TEST_F(CopyingWithProgress, OverwritesWhatIsThere) {
    add("a", "something much longer than the source");

    EXPECT_TRUE(copy(add("source", "short"), {disk / "a"}));
    EXPECT_EQ(read(disk / "a"), "short");
}

TEST_F(CopyingWithProgress, WritesThroughALinkAtTheDestination) {
    add("file", "before");
    addLink("link", disk / "file");

    EXPECT_TRUE(copy(add("source", "after"), {disk / "link"}));
    EXPECT_EQ(read(disk / "file"), "after");
    EXPECT_TRUE(std::filesystem::is_symlink(disk / "link"));
}

TEST_F(CopyingWithProgress, ReadsTheFileThatALinkLeadsTo) {
    add("source", "contents");

    EXPECT_TRUE(copy(addLink("link", disk / "source"), {disk / "a"}));
    EXPECT_EQ(read(disk / "a"), "contents");
}

TEST_F(CopyingWithProgress, HasShorterFormsForOneDestination) {
    const std::string source = add("source", "contents");

    EXPECT_TRUE(KZFileManager::copyFileWithProgress(source, disk / "a", delegate, std::string("first")));
    EXPECT_THAT(texts(finalSettings, "destinations"), ElementsAre(disk / "a"));
    EXPECT_EQ(finalSettings.count("object2"), 0U);
    EXPECT_TRUE(KZFileManager::copyFileWithProgress(source, disk / "b", delegate, std::string("first"), 7));
    EXPECT_EQ(std::any_cast<int>(*finalSettings.at("object2").as<std::any>()), 7);
    EXPECT_EQ(finalSettings.count("sourceChecksum"), 0U);
}

TEST_F(CopyingWithProgress, DescribesTheCopyToItsDelegate) {
    const std::string source = add("source", "contents");

    KZFileManager::copyFileWithProgress(source, {disk / "a", disk / "b"}, Verification::none, delegate,
                                        std::string("first"), 2);

    EXPECT_EQ(text(finalSettings, "source"), source);
    EXPECT_THAT(texts(finalSettings, "destinations"), ElementsAre(disk / "a", disk / "b"));
    EXPECT_EQ(text(finalSettings, "operationtype"), "copy");
    EXPECT_EQ(*finalSettings.at("delegate").as<KZFileManager::SharedFileCopyDelegate>(), delegate);
    EXPECT_EQ(std::any_cast<std::string>(*finalSettings.at("object").as<std::any>()), "first");
    EXPECT_EQ(std::any_cast<int>(*finalSettings.at("object2").as<std::any>()), 2);
    EXPECT_THAT(finalSettings, SizeIs(6));
}

TEST_F(CopyingWithProgress, LeavesOutOfTheDescriptionWhatWasNotGiven) {
    copy(add("source", "contents"), {disk / "a"});

    EXPECT_THAT(finalSettings, ElementsAre(Key("delegate"), Key("destinations"), Key("operationtype"), Key("source")));
}

TEST_F(CopyingWithProgress, NeedsNoDelegate) {
    EXPECT_TRUE(KZFileManager::copyFileWithProgress(addHole("source", 21 * mebibyte), {disk / "a"}, Verification::none,
                                                    {}, {}, {}));
    EXPECT_EQ(queue.pieces, 0);
}

TEST_F(CopyingWithProgress, NeedsNoDelegateThatAnswersEverything) {
    *delegate = {};

    EXPECT_TRUE(copy(addHole("source", 21 * mebibyte), {disk / "a"}));
    EXPECT_EQ(queue.pieces, 0);
}

TEST_F(CopyingWithProgress, TellsItsEndOnceOnTheThreadOfTheCaller) {
    copy(add("source", "contents"), {disk / "a", disk / "b"});

    EXPECT_EQ(finished, 1);
    EXPECT_EQ(finishedThread, std::this_thread::get_id());
}

TEST_F(CopyingWithProgress, ReportsOnAnotherThreadEveryTwentyMebibytes) {
    EXPECT_TRUE(copy(addHole("source", 45 * mebibyte), {disk / "a"}));

    EXPECT_THAT(reports, ElementsAre(20 * mebibyte, 40 * mebibyte));
    EXPECT_EQ(questions, 2);
    EXPECT_NE(reportThread, std::this_thread::get_id());
    EXPECT_EQ(text(reportSettings, "source"), disk / "source");
}

TEST_F(CopyingWithProgress, ReportsNothingOfAFileBelowTwentyMebibytes) {
    copy(addHole("source", 20 * mebibyte - 1), {disk / "a"});

    EXPECT_THAT(reports, IsEmpty());
    EXPECT_EQ(questions, 0);
}

TEST_F(CopyingWithProgress, ReportsAVeryLargeFileFiveHundredTimes) {
    EndlessFiles endless(20000 * mebibyte);
    auto host = platform::host();
    host.openFiles = &endless;
    const platform::ScopedHost scope(host);
    queue.held = true;

    EXPECT_TRUE(copy(add("source"), {disk / "a"}));
    queue.release();

    EXPECT_THAT(reports, SizeIs(500));
    EXPECT_EQ(reports.front(), 40 * mebibyte);
    EXPECT_EQ(reports.back(), 20000 * mebibyte);
}

TEST_F(CopyingWithProgress, EndsWithoutAMessageWhenTheDelegateSaysNo) {
    goOn = false;

    EXPECT_FALSE(copy(addHole("source", 60 * mebibyte), {disk / "a"}));
    EXPECT_EQ(questions, 1);
    EXPECT_EQ(finished, 0);
    EXPECT_THAT(newLogEntries(), IsEmpty());
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(CopyingWithProgress, LeavesNothingWhenItIsCancelledButAnEmptyFileWhereOneWas) {
    goOn = false;
    add("b", "before");

    EXPECT_FALSE(copy(addHole("source", 60 * mebibyte), {disk / "a", disk / "b"}));

    EXPECT_FALSE(stands(disk / "a"));
    EXPECT_TRUE(stands(disk / "b"));
    EXPECT_EQ(read(disk / "b"), "");
}

TEST_F(CopyingWithProgress, IsNotChangedByANoThatComesTooLate) {
    goOn = false;
    queue.held = true;

    EXPECT_TRUE(copy(addHole("source", 60 * mebibyte), {disk / "a"}));
    queue.release();

    EXPECT_EQ(questions, 3);
    EXPECT_EQ(std::filesystem::file_size(disk / "a"), 60 * mebibyte);
}

TEST_F(CopyingWithProgress, KeepsADelegateUntilItsLastReport) {
    queue.held = true;
    const std::weak_ptr<KZFileManager::FileCopyDelegate> watch = delegate;
    copy(addHole("source", 21 * mebibyte), {disk / "a"});

    finalSettings.clear();
    delegate.reset();
    EXPECT_FALSE(watch.expired());
    queue.release();
    reportSettings.clear();

    EXPECT_TRUE(watch.expired());
    EXPECT_THAT(reports, SizeIs(1));
}

TEST_F(CopyingWithProgress, GoesOnWhenADelegateThrows) {
    const auto raise = [] { throw std::runtime_error("trouble"); };
    delegate->fileCopyBytesWritten = [&](std::uint64_t, const Settings&) { raise(); };
    delegate->fileCopyShouldContinue = [&](const Settings&) -> bool { throw std::runtime_error("trouble"); };
    delegate->fileCopyFinished = [&](const Settings&) { raise(); };

    EXPECT_TRUE(copy(addHole("source", 21 * mebibyte), {disk / "a"}));
    EXPECT_THAT(newLogEntries(), ElementsAre("Exception in fileCopyBytesWritten:settings:. std::exception - trouble.",
                                             "Exception in fileCopyShouldContinue:. std::exception - trouble.",
                                             "Exception in fileCopyFinished:. std::exception - trouble."));
}

// Given to a copy as one of the caller's objects.
struct ReluctantObject {
    explicit ReluctantObject(const bool& refusing) : refuses(&refusing) {}
    ReluctantObject(const ReluctantObject& other) : refuses(other.refuses) {
        if (*refuses) {
            throw std::runtime_error("not to be copied");
        }
    }
    ReluctantObject& operator=(const ReluctantObject&) = delete;
    ~ReluctantObject() = default;

    const bool* refuses;
};

TEST_F(CopyingWithProgress, FailsWithoutAnExceptionWhenAnObjectCannotBeCopied) {
    bool refuses = false;
    const std::any object(std::in_place_type<ReluctantObject>, refuses);
    const std::string source = add("source");
    refuses = true;

    EXPECT_FALSE(KZFileManager::copyFileWithProgress(source, disk / "a", delegate, object));
    EXPECT_THAT(newLogEntries(), ElementsAre("Exception in copyFileWithProgress:destinations:verificationType:delegate:"
                                             "object:object:. std::exception - not to be copied."));
    EXPECT_FALSE(stands(disk / "a"));
}

TEST_F(CopyingWithProgress, MayBeLetGoOfByItsCallersFromWithinAnAnswer) {
    auto given = std::shared_ptr<const KZFileManager::FileCopyDelegate>(delegate);
    std::vector<std::string> destinations{disk / "a", disk / "b"};
    delegate->fileCopyShouldContinue = [&](const Settings&) {
        ++questions;
        given.reset();
        destinations.clear();
        return true;
    };

    EXPECT_TRUE(KZFileManager::copyFileWithProgress(addHole("source", 45 * mebibyte), destinations, Verification::none,
                                                    given, {}, {}));
    EXPECT_EQ(questions, 2);
    EXPECT_EQ(finished, 1);
    EXPECT_EQ(std::filesystem::file_size(disk / "b"), 45 * mebibyte);
}

TEST_F(CopyingWithProgress, EndsSoonAfterANoFromTheHostsOwnThreads) {
    auto host = platform::host();
    host.background = platform::linux_host::services().background;
    const platform::ScopedHost scope(host);
    std::atomic<bool> stop = false;
    delegate->fileCopyBytesWritten = [&](std::uint64_t, const Settings&) { stop = true; };
    delegate->fileCopyShouldContinue = [&](const Settings&) { return !stop; };

    EXPECT_FALSE(copy(addHole("source", 4096 * mebibyte), {disk / "a", disk / "b"}));
    EXPECT_FALSE(stands(disk / "a"));
    EXPECT_FALSE(stands(disk / "b"));
    EXPECT_EQ(finished, 0);
}

TEST_F(CopyingWithProgress, WorksOnTheHostsOwnThreads) {
    auto host = platform::host();
    host.background = platform::linux_host::services().background;
    const platform::ScopedHost scope(host);
    std::atomic<int> told = 0;
    delegate->fileCopyBytesWritten = [&](std::uint64_t, const Settings&) { ++told; };

    EXPECT_TRUE(copy(addHole("source", 100 * mebibyte), {disk / "a", disk / "b"}));
    while (told < 5 || questions < 5) {
        std::this_thread::yield();
    }
    EXPECT_EQ(told, 5);
}

TEST_F(CopyingWithProgress, GivesTheCopiesTheModeAndDateOfTheSource) {
    const std::string source = add("source");
    ::chmod(source.c_str(), 0754);
    const auto date = std::filesystem::last_write_time(source) - std::chrono::hours(100);
    std::filesystem::last_write_time(source, date);

    copy(source, {disk / "a", disk / "b"});

    for (const std::string& path : {disk / "a", disk / "b"}) {
        EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0754)) << path;
        EXPECT_EQ(std::filesystem::last_write_time(path), date) << path;
    }
}

TEST_F(CopyingWithProgress, GivesTheCopiesTheExtendedAttributesOfTheSource) {
    const std::string source = add("source");
    if (::setxattr(source.c_str(), "user.colour", "red", 3, 0) != 0) {
        GTEST_SKIP() << "this file system keeps no extended attributes";
    }

    copy(source, {disk / "a"});

    std::string value(3, '\0');
    EXPECT_EQ(::getxattr((disk / "a").c_str(), "user.colour", value.data(), value.size()), 3);
    EXPECT_EQ(value, "red");
}

TEST_F(CopyingWithProgress, LeavesNoExtendedAttributeOfTheFileThatItOverwrites) {
    const std::string old = add("a", "before");
    if (::setxattr(old.c_str(), "user.colour", "red", 3, 0) != 0) {
        GTEST_SKIP() << "this file system keeps no extended attributes";
    }

    EXPECT_TRUE(copy(add("source"), {old}));
    EXPECT_LT(::getxattr(old.c_str(), "user.colour", nullptr, 0), 0);
}

TEST_F(CopyingWithProgress, SaysOnTheConsoleThatAttributesCouldNotBeSetAndSucceeds) {
    fail(OpenOperation::attributes, disk / "a", {.code = EPERM});

    EXPECT_TRUE(copy(add("source"), {disk / "a", disk / "b"}));
    EXPECT_THAT(console.lines(),
                ElementsAre("Error setting metadata for file " + (disk / "a") + " - attributes refused"));
    EXPECT_EQ(finished, 1);
    EXPECT_EQ(openFiles.count(OpenOperation::attributes), 2U);
}

TEST_F(CopyingWithProgress, IsReadableForItsOwnerAloneUntilItIsComplete) {
    const std::string source = add("source", std::string(100000, 'x'));
    ::chmod(source.c_str(), 0644);
    std::vector<std::filesystem::perms> seen;
    openFiles.decide = [&](const OpenCall& call) {
        if (call.operation == OpenOperation::write) {
            seen.push_back(std::filesystem::status(disk / "a").permissions());
        }
        return Outcome{};
    };

    copy(source, {disk / "a"});

    EXPECT_THAT(seen, ElementsAre(std::filesystem::perms(0600), std::filesystem::perms(0600)));
    EXPECT_EQ(std::filesystem::status(disk / "a").permissions(), std::filesystem::perms(0644));
}

TEST_F(CopyingWithProgress, LeavesNoDescriptorOpenHoweverItEnds) {
    const std::string source = add("source", std::string(100000, 'x'));
    const std::size_t before = descriptors();

    copy(source, {disk / "a", disk / "b"}, Verification::md5);
    copy(source, {disk / "c", source});
    fail(OpenOperation::write, disk / "e", {.code = ENOSPC});
    copy(source, {disk / "d", disk / "e"}, Verification::sha1);

    EXPECT_EQ(descriptors(), before);
}

}  // namespace
