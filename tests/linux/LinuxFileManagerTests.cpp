#include "platform/linux/services/files/LinuxFileManager.h"

#include <fcntl.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "tests/linux/FilesFixture.h"

namespace {

using platform::FileType;
using platform::Intermediates;

using Files = FilesFixture;

TEST_F(Files, LockedFileCanNeitherBeRemovedNorReplacedUntilItIsUnlocked) {
    write("file", "x");
    if (m_files.setImmutable(at("file"), true)) {
        GTEST_SKIP() << "no right to lock files, or no such flag here";
    }
    const bool locked = m_files.attributes(at("file"))->immutable;
    const auto again = m_files.setImmutable(at("file"), true);
    const auto removed = m_files.removeItem(at("file"));
    const auto written = m_files.writeAtomically(at("file"), "new");
    ASSERT_FALSE(m_files.setImmutable(at("file"), false));
    EXPECT_TRUE(locked);
    EXPECT_FALSE(again);
    EXPECT_TRUE(removed);
    EXPECT_TRUE(written);
    EXPECT_FALSE(m_files.attributes(at("file"))->immutable);
    EXPECT_FALSE(m_files.removeItem(at("file")));
}

TEST_F(Files, PathWithANulInItNamesNothing) {
    write("file", "x");
    makeFolder("folder");
    link("link", "file");
    using namespace std::string_literals;
    for (const std::string& path : {at("file\0x"s), at("folder\0x"s), at("link\0x"s), "/\0x"s}) {
        EXPECT_FALSE(m_files.fileExists(path));
        EXPECT_FALSE(m_files.isFolder(path));
        EXPECT_FALSE(m_files.isWritable(path));
        EXPECT_FALSE(m_files.isExecutable(path));
        EXPECT_FALSE(m_files.identity(path));
        EXPECT_FALSE(m_files.attributes(path));
        EXPECT_FALSE(m_files.destinationOfSymbolicLink(path));
        EXPECT_FALSE(m_files.contentsOfDirectory(path));
        EXPECT_FALSE(m_files.visitDirectory(path, platform::VisitSizes::no, [](const auto&) { FAIL(); }));
        EXPECT_FALSE(m_files.readFile(path, 100));
        EXPECT_FALSE(m_files.openForAppending(path));
    }
}

TEST_F(Files, PathWithANulInItIsRefusedWhereSomethingWouldChange) {
    using namespace std::string_literals;
    write("file", "x");
    const std::string path = at("file\0x"s);
    const std::string fresh = at("fresh\0x"s);
    EXPECT_EQ(m_files.removeItem(path)->code, EINVAL);
    EXPECT_EQ(m_files.createDirectory(fresh, Intermediates::no)->code, EINVAL);
    EXPECT_EQ(m_files.createDirectory(fresh, Intermediates::yes)->code, EINVAL);
    EXPECT_EQ(m_files.copyItem(path, at("copy"))->code, EINVAL);
    EXPECT_EQ(m_files.copyItem(at("file"), fresh)->code, EINVAL);
    EXPECT_EQ(m_files.moveItem(path, at("moved"))->code, EINVAL);
    EXPECT_EQ(m_files.moveItem(at("file"), fresh)->code, EINVAL);
    EXPECT_EQ(m_files.setImmutable(path, true)->code, EINVAL);
    EXPECT_EQ(m_files.setPermissions(path, 0)->code, EINVAL);
    EXPECT_EQ(m_files.setCreationDate(path, {})->code, EINVAL);
    EXPECT_EQ(m_files.writeAtomically(path, "new")->code, EINVAL);
    EXPECT_EQ(names("."), std::vector<std::string>{"file"});
    EXPECT_EQ(read("file"), "x");
}

TEST_F(Files, LockOfALinkLeavesItsTargetAlone) {
    write("file", "x");
    link("link", "file");
    EXPECT_FALSE(m_files.setImmutable(at("link"), false));
    EXPECT_TRUE(m_files.setImmutable(at("link"), true));
    EXPECT_FALSE(m_files.attributes(at("file"))->immutable);
}

TEST_F(Files, FileSystemWithoutTheFlagCountsAsUnlocked) {
    EXPECT_FALSE(m_files.setImmutable("/proc/self/status", false));
    EXPECT_TRUE(m_files.setImmutable("/proc/self/status", true));
}

TEST_F(Files, CreationDateIsTheBirthTimeUntilOneIsSet) {
    const auto before = std::chrono::system_clock::now() - std::chrono::seconds(2);
    write("file", "x");
    const auto date = m_files.attributes(at("file"))->creationDate;
    if (!date) {
        GTEST_SKIP() << "this file system keeps no birth times";
    }
    EXPECT_GE(*date, before);
    EXPECT_LE(*date, std::chrono::system_clock::now());
}

TEST_F(Files, CreationDateThatWasSetIsCarriedByACopy) {
    write("from", "x");
    const platform::Date date{std::chrono::nanoseconds{-1'000'000'001}};  // before 1970
    if (m_files.setCreationDate(at("from"), date)) {
        GTEST_SKIP() << "no extended attributes here";
    }
    ASSERT_FALSE(m_files.copyItem(at("from"), at("to")));
    EXPECT_EQ(m_files.attributes(at("to"))->creationDate, date);
}

TEST_F(Files, MutilatedCreationDateIsIgnored) {
    write("file", "x");
    for (const char* text : {"", "12x", "99999999999999999999999", "-"}) {
        if (!setAttribute("file", "user.wickfield.creation-date", text)) {
            GTEST_SKIP() << "no extended attributes here";
        }
        const auto date = m_files.attributes(at("file"))->creationDate;
        EXPECT_TRUE(!date || *date > platform::Date{std::chrono::hours{24 * 365 * 50}}) << text;
    }
}

TEST_F(Files, ModificationDateIsExact) {
    write("file", "x");
    const std::array<timespec, 2> times{timespec{1, 0}, timespec{1'234'567'890, 123'456'789}};
    ASSERT_EQ(::utimensat(AT_FDCWD, at("file").c_str(), times.data(), 0), 0);
    EXPECT_EQ(m_files.attributes(at("file"))->modificationDate.time_since_epoch(),
              std::chrono::nanoseconds{1'234'567'890'123'456'789});
}

TEST_F(Files, ListingSaysWhatKindAnEntryIs) {
    makeFolder("all/folder");
    write("all/file", "x");
    link("all/link", "folder");
    ASSERT_EQ(::mkfifo(at("all/pipe").c_str(), 0600), 0);
    const auto entries = m_files.contentsOfDirectory(at("all")).value();
    EXPECT_EQ(entries.size(), 4U);
    for (const auto& entry : entries) {
        const FileType expected = entry.name == "folder" ? FileType::folder
                                  : entry.name == "file" ? FileType::regular
                                  : entry.name == "link" ? FileType::symbolicLink
                                                         : FileType::other;
        EXPECT_TRUE(entry.type == expected || entry.type == FileType::unknown) << entry.name;
    }
}

TEST_F(Files, FolderChainUnderAFileOrADanglingLinkIsRefused) {
    write("file", "x");
    link("dangling", "nowhere");
    EXPECT_EQ(m_files.createDirectory(at("file/a/b"), Intermediates::yes)->code, ENOTDIR);
    EXPECT_TRUE(m_files.createDirectory(at("dangling/a"), Intermediates::yes));
    EXPECT_TRUE(m_files.createDirectory(at("dangling"), Intermediates::yes));
    EXPECT_FALSE(isThere("nowhere"));
}

TEST_F(Files, FolderChainWithDotsAndDoubleSlashesIsMade) {
    EXPECT_FALSE(m_files.createDirectory(at("a//b/./c/"), Intermediates::yes));
    EXPECT_TRUE(m_files.isFolder(at("a/b/c")));
}

TEST_F(Files, ChainMadeByTwoThreadsAtOnceSucceedsForBoth) {
    std::string path = "a";
    for (int level = 0; level < 100; ++level) {
        path += "/b";
    }
    std::atomic<int> failures{0};
    const auto make = [&] { failures += m_files.createDirectory(at(path), Intermediates::yes) ? 1 : 0; };
    std::thread other(make);
    make();
    other.join();
    EXPECT_EQ(failures, 0);
}

TEST_F(Files, FileThatDoesNotKnowItsSizeIsReadUpToTheLimit) {
    EXPECT_NE(m_files.readFile("/proc/self/status", 1'000'000)->find("Pid:"), std::string::npos);
    EXPECT_EQ(m_files.readFile("/proc/self/status", 10), std::nullopt);
}

TEST_F(Files, FailureNamesThePathAndEndsWithoutAFullStop) {
    EXPECT_EQ(m_files.setPermissions(at("missing"), 0600)->description,
              "Cannot set the permissions of “" + at("missing") + "”: No such file or directory");
}

}  // namespace
