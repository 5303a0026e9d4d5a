#include "lib/KZFileManager/Metadata.h"

#include <cmath>
#include <cstdlib>
#include <limits>

#include "tests/lib/FilesFixture.h"

namespace {

using namespace std::chrono_literals;
using KZFileManager::FinderColor;
using testing::ElementsAre;
using testing::IsEmpty;

const platform::Date marker = std::chrono::sys_days{std::chrono::year{1984} / 1 / 24} + 8h;

class Metadata : public FilesFixture {
protected:
    void SetUp() override {
        if (files.setExtendedAttribute(file, "probe", {})) {
            GTEST_SKIP() << "no extended attributes here";
        }
    }
    std::vector<std::string> newConsoleLines() {
        const auto lines = console.lines();
        std::vector<std::string> fresh(lines.begin() + static_cast<std::ptrdiff_t>(m_linesRead), lines.end());
        m_linesRead = lines.size();
        return fresh;
    }
    std::string raw(const std::string& path, const std::string& name) {
        std::string value(1000, '\0');
        const auto size = files.readExtendedAttribute(path, name, value);
        value.resize(size.index() == 0 ? std::get<std::size_t>(size) : 0);
        return value;
    }

    const std::string file = add("file");

private:
    std::size_t m_linesRead = 0;
};

TEST_F(Metadata, IsReadAsItWasSet) {
    EXPECT_TRUE(KZFileManager::setMetadataValue("väl ue", "com.example.key", file));
    EXPECT_EQ(KZFileManager::metadataValueForKey("com.example.key", file), "väl ue");
}

TEST_F(Metadata, IsStoredWithoutATerminatingZero) {
    KZFileManager::setMetadataValue("abc", "com.example.key", file);
    EXPECT_EQ(raw(file, "com.example.key"), "abc");
}

TEST_F(Metadata, EndsAtAZeroInTheValue) {
    KZFileManager::setMetadataValue(std::string("ab\0cd", 5), "com.example.key", file);
    EXPECT_EQ(raw(file, "com.example.key"), "ab");
}

TEST_F(Metadata, IsReplacedByTheNextValue) {
    KZFileManager::setMetadataValue("longer than the next", "com.example.key", file);
    KZFileManager::setMetadataValue("short", "com.example.key", file);
    EXPECT_EQ(KZFileManager::metadataValueForKey("com.example.key", file), "short");
}

TEST_F(Metadata, ReadingTellsTheSizeOnTheConsoleEveryTime) {
    KZFileManager::setMetadataValue("abc", "com.example.key", file);
    EXPECT_THAT(newConsoleLines(), IsEmpty());
    KZFileManager::metadataValueForKey("com.example.key", file);
    KZFileManager::metadataValueForKey("com.example.key", file);
    EXPECT_THAT(newConsoleLines(), ElementsAre("buffer val: 3", "buffer val: 3"));
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(Metadata, ThatIsAbsentIsNoneAndTellsTheErrorNumber) {
    EXPECT_EQ(KZFileManager::metadataValueForKey("com.example.key", file), std::nullopt);
    EXPECT_THAT(newConsoleLines(),
                ElementsAre("buffer val: -1", "Error retrieving file attribute: " + std::to_string(ENODATA)));
}

TEST_F(Metadata, OfAMissingFileIsNoneAndTellsTheErrorNumber) {
    EXPECT_EQ(KZFileManager::metadataValueForKey("com.example.key", disk / "missing"), std::nullopt);
    EXPECT_THAT(newConsoleLines(),
                ElementsAre("buffer val: -1", "Error retrieving file attribute: " + std::to_string(ENOENT)));
}

TEST_F(Metadata, ThatIsEmptyIsNone) {
    EXPECT_TRUE(KZFileManager::setMetadataValue("", "com.example.key", file));
    EXPECT_EQ(KZFileManager::metadataValueForKey("com.example.key", file), std::nullopt);
    EXPECT_THAT(newConsoleLines(), ElementsAre("buffer val: 0"));
}

TEST_F(Metadata, IsReadUpTo255Bytes) {
    const std::string longest(255, 'x');
    KZFileManager::setMetadataValue(longest, "com.example.key", file);
    EXPECT_EQ(KZFileManager::metadataValueForKey("com.example.key", file), longest);
}

TEST_F(Metadata, BeyondThatIsNoneAndTellsTheSizeOnly) {
    KZFileManager::setMetadataValue(std::string(256, 'x'), "com.example.key", file);
    EXPECT_EQ(KZFileManager::metadataValueForKey("com.example.key", file), std::nullopt);
    EXPECT_THAT(newConsoleLines(), ElementsAre("buffer val: 256"));
}

TEST_F(Metadata, ThatIsNoUTF8TextIsNone) {
    const std::string bytes = "\xff\xfe";
    ASSERT_FALSE(files.setExtendedAttribute(file, "com.example.key", bytes));
    EXPECT_EQ(KZFileManager::metadataValueForKey("com.example.key", file), std::nullopt);
}

TEST_F(Metadata, MayHoldZeroes) {
    const std::string bytes("a\0b", 3);
    ASSERT_FALSE(files.setExtendedAttribute(file, "com.example.key", bytes));
    EXPECT_EQ(KZFileManager::metadataValueForKey("com.example.key", file), bytes);
}

TEST_F(Metadata, ThatGoesBetweenTheTwoReadsIsNone) {
    KZFileManager::setMetadataValue("abc", "com.example.key", file);
    int reads = 0;
    files.fails = [&](const Call& call) {
        return call.operation == Operation::readExtendedAttribute && ++reads == 2 ? std::optional(ENODATA)
                                                                                  : std::nullopt;
    };
    EXPECT_EQ(KZFileManager::metadataValueForKey("com.example.key", file), std::nullopt);
    EXPECT_THAT(newConsoleLines(), ElementsAre("buffer val: 3"));
}

TEST_F(Metadata, IsThatOfTheFileThatALinkLeadsTo) {
    const auto link = addLink("link", "file");
    EXPECT_TRUE(KZFileManager::setMetadataValue("abc", "com.example.key", link));
    EXPECT_EQ(KZFileManager::metadataValueForKey("com.example.key", file), "abc");
    EXPECT_EQ(KZFileManager::metadataValueForKey("com.example.key", link), "abc");
}

TEST_F(Metadata, ThatCannotBeSetIsToldOnTheConsole) {
    const auto missing = disk / "missing";
    EXPECT_FALSE(KZFileManager::setMetadataValue("abc", "com.example.key", missing));
    EXPECT_THAT(newConsoleLines(), ElementsAre("Error setting extended attribute for file " + missing + " - -1"));
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(Metadata, UnderAnImpossibleNameIsRefused) {
    for (const std::string& name : {std::string(), std::string(1000, 'n'), std::string("a\0b", 3)}) {
        EXPECT_FALSE(KZFileManager::setMetadataValue("abc", name, file));
        EXPECT_EQ(KZFileManager::metadataValueForKey(name, file), std::nullopt);
    }
    EXPECT_FALSE(KZFileManager::setMetadataValue("abc", "com.example.key", ""));
}

TEST_F(Metadata, FillsNoMoreThanTheFileSystemHolds) {
    EXPECT_FALSE(KZFileManager::setMetadataValue(std::string(1'000'000, 'x'), "com.example.key", file));
    EXPECT_EQ(newConsoleLines().size(), 1U);
}

TEST_F(Metadata, TurningCachingOffDoesNothing) {
    files.forgetCalls();
    KZFileManager::disableFileSystemCachingForFile(file);
    EXPECT_THAT(files.calls(), IsEmpty());
    EXPECT_EQ(read(file), "contents");
}

class FinderProgress : public Metadata {
protected:
    void SetUp() override {
        Metadata::SetUp();
        // The host's tool, by way of the system's own attribute names.
        processes.substitutes["/usr/bin/xattr"] =
            add("xattr", "#!/bin/bash\necho \"$@\" >> '" + disk.path() + "/commands'\n");
        std::filesystem::permissions(disk / "xattr", std::filesystem::perms::all);
    }
    std::string commands() { return read(disk / "commands"); }
};

TEST_F(FinderProgress, WritesTheFractionWithThreeDecimals) {
    KZFileManager::setFinderProgress(0.5F, file);
    EXPECT_EQ(commands(), "-w com.apple.progress.fractionCompleted 0.500 " + file + "\n");
}

TEST_F(FinderProgress, OfNothingIsShownAndOfAllToo) {
    KZFileManager::setFinderProgress(0.0F, file);
    KZFileManager::setFinderProgress(1.0F, file);
    KZFileManager::setFinderProgress(0.12345F, file);
    const std::string write = "-w com.apple.progress.fractionCompleted ";
    EXPECT_EQ(commands(),
              write + "0.000 " + file + "\n" + write + "1.000 " + file + "\n" + write + "0.123 " + file + "\n");
}

TEST_F(FinderProgress, PassesThePathAsOneArgument) {
    const auto spaced = add("a b; $(c) 'd'");
    KZFileManager::setFinderProgress(0.5F, spaced);
    const auto last = processes.commands().back();
    EXPECT_EQ(last.arguments.size(), 4U);
    EXPECT_EQ(last.arguments.back(), spaced);
}

TEST_F(FinderProgress, DatesTheFileToTheMarker) {
    KZFileManager::setFinderProgress(0.5F, file);
    EXPECT_EQ(KZFileManager::creationDateForFile(file), marker);
}

TEST_F(FinderProgress, LeavesTheModificationDateAndTheContents) {
    const auto before = KZFileManager::modificationDateForFile(file);
    KZFileManager::setFinderProgress(0.5F, file);
    KZFileManager::removeFinderProgressForFile(file);
    EXPECT_EQ(KZFileManager::modificationDateForFile(file), before);
    EXPECT_EQ(read(file), "contents");
}

TEST_F(FinderProgress, RemovedTakesTheAttributeAwayAndDatesTheFileToItsModification) {
    KZFileManager::setFinderProgress(0.5F, file);
    KZFileManager::removeFinderProgressForFile(file);
    EXPECT_THAT(commands(), testing::EndsWith("-d com.apple.progress.fractionCompleted " + file + "\n"));
    EXPECT_EQ(KZFileManager::creationDateForFile(file), KZFileManager::modificationDateForFile(file));
}

TEST_F(FinderProgress, ThatIsNoNumberIsRemoved) {
    KZFileManager::setFinderProgress(std::numeric_limits<float>::quiet_NaN(), file);
    KZFileManager::setFinderProgress(-0.001F, file);
    const std::string removal = "-d com.apple.progress.fractionCompleted " + file + "\n";
    EXPECT_EQ(commands(), removal + removal);
}

TEST_F(FinderProgress, DatesTheFileAlthoughTheToolFails) {
    processes.substitutes["/usr/bin/xattr"] = "/bin/false";
    KZFileManager::setFinderProgress(0.5F, file);
    EXPECT_EQ(KZFileManager::creationDateForFile(file), marker);
}

TEST_F(FinderProgress, OfAMissingFileChangesNothing) {
    KZFileManager::setFinderProgress(0.5F, disk / "missing");
    EXPECT_FALSE(stands(disk / "missing"));
}

class FinderProgressByTheShippedTool : public Metadata {
protected:
    void SetUp() override {
        Metadata::SetUp();
        processes.substitutes["/usr/bin/xattr"] = WICKFIELD_TOOLS_FOLDER "/xattr";
    }
    std::optional<std::string> fraction() {
        return KZFileManager::metadataValueForKey("com.apple.progress.fractionCompleted", file);
    }
};

TEST_F(FinderProgressByTheShippedTool, IsAnAttributeThatCanBeRead) {
    KZFileManager::setFinderProgress(0.5F, file);
    EXPECT_EQ(fraction(), "0.500");
    KZFileManager::setFinderProgress(0.75F, file);
    EXPECT_EQ(fraction(), "0.750");
    EXPECT_EQ(KZFileManager::creationDateForFile(file), marker);
}

TEST_F(FinderProgressByTheShippedTool, RemovedLeavesNoAttribute) {
    KZFileManager::setFinderProgress(0.5F, file);
    KZFileManager::removeFinderProgressForFile(file);
    EXPECT_EQ(fraction(), std::nullopt);
    EXPECT_EQ(KZFileManager::creationDateForFile(file), KZFileManager::modificationDateForFile(file));
}

class ModificationDate : public FilesFixture {};

TEST_F(ModificationDate, IsTheOneThatWasSet) {
    const auto file = add("file");
    const platform::Date date = std::chrono::sys_days{std::chrono::year{2001} / 2 / 3} + 4h + 5ms;
    EXPECT_TRUE(KZFileManager::setModificationDate(date, file));
    EXPECT_EQ(KZFileManager::modificationDateForFile(file), date);
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(ModificationDate, MayLieBeforeTheComputersTime) {
    const auto file = add("file");
    const platform::Date date = std::chrono::sys_days{std::chrono::year{1950} / 2 / 3} + 1ms;
    EXPECT_TRUE(KZFileManager::setModificationDate(date, file));
    EXPECT_EQ(KZFileManager::modificationDateForFile(file), date);
}

TEST_F(ModificationDate, OfAMissingFileIsRefusedSilently) {
    EXPECT_FALSE(KZFileManager::setModificationDate({}, disk / "missing"));
    EXPECT_THAT(newLogEntries(), IsEmpty());
    EXPECT_THAT(console.lines(), IsEmpty());
}

class FinderLabel : public Metadata {};

TEST_F(FinderLabel, IsNoneAtFirst) { EXPECT_EQ(KZFileManager::finderColorIndexForPath(file), 0); }

TEST_F(FinderLabel, IsTheOneThatWasSet) {
    for (long index = 7; index >= 0; --index) {
        KZFileManager::setFinderColorIndex(index, file);
        EXPECT_EQ(KZFileManager::finderColorIndexForPath(file), index);
    }
}

TEST_F(FinderLabel, OfAMissingItemIsNone) {
    EXPECT_EQ(KZFileManager::finderColorIndexForPath(disk / "missing"), 0);
    EXPECT_EQ(KZFileManager::finderColorForPath(disk / "missing"), std::nullopt);
}

TEST_F(FinderLabel, StaysWhenANumberIsNoLabel) {
    KZFileManager::setFinderColorIndex(3, file);
    for (const long index : {-1L, 8L, std::numeric_limits<long>::max()}) {
        KZFileManager::setFinderColorIndex(index, file);
        EXPECT_EQ(KZFileManager::finderColorIndexForPath(file), 3);
    }
}

TEST_F(FinderLabel, OfNoPathDoesNothing) {
    files.forgetCalls();
    KZFileManager::setFinderColorIndex(3, std::nullopt);
    EXPECT_THAT(files.calls(), IsEmpty());
}

TEST_F(FinderLabel, FailuresAreNotReported) {
    KZFileManager::setFinderColorIndex(3, disk / "missing");
    EXPECT_THAT(newLogEntries(), IsEmpty());
    EXPECT_THAT(newConsoleLines(), IsEmpty());
}

TEST_F(FinderLabel, GivesTheColourOfTheItem) {
    KZFileManager::setFinderColorIndex(6, file);
    EXPECT_EQ(KZFileManager::finderColorForPath(file), (FinderColor{0.0083, 0.54, 1.0}));
}

TEST(FinderColors, AreSeven) {
    const std::vector<FinderColor> colors{{0.0, 0.0, 0.72},     {0.2056, 0.5, 0.85},  {0.7917, 0.26, 0.86},
                                          {0.5789, 0.56, 0.98}, {0.1388, 0.54, 0.95}, {0.0083, 0.54, 1.0},
                                          {0.0888, 0.52, 0.98}};
    for (std::size_t index = 1; index <= colors.size(); ++index) {
        EXPECT_EQ(KZFileManager::finderColorForColorIndex(static_cast<long>(index)), colors[index - 1]) << index;
    }
}

TEST(FinderColors, AreOpaque) { EXPECT_EQ(KZFileManager::finderColorForColorIndex(1)->alpha, 1.0); }

TEST(FinderColors, OfOtherNumbersAreNone) {
    for (const long index : {0L, 8L, -1L, std::numeric_limits<long>::max(), std::numeric_limits<long>::min()}) {
        EXPECT_EQ(KZFileManager::finderColorForColorIndex(index), std::nullopt) << index;
    }
}

}  // namespace
