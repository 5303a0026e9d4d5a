#include <cerrno>

#include "tests/lib/LogFixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::uint64_t rollOverSize = 500000;

class LogRollOver : public LogFixture {
protected:
    LogRollOver() {
        KZLog::createNewLog("Test");
        KZLog::finishWriting();
    }
    // Fills the current log up to that many bytes.
    static void fillTo(std::uint64_t bytes) {
        const std::uint64_t written = KZLog::sharedController()->bytesWritten();
        KZLog::fastAppendLog("%@", std::string(bytes - written - lineOverhead, 'x'));
        KZLog::finishWriting();
    }
};

TEST_F(LogRollOver, DoesNotHappenOneByteBelowTheLimit) {
    fillTo(rollOverSize - 1);
    EXPECT_EQ(std::filesystem::file_size(log(1)), rollOverSize - 1);
    EXPECT_FALSE(stands(log(2)));
}

TEST_F(LogRollOver, HappensWithTheEntryThatReachesTheLimit) {
    fillTo(rollOverSize);
    EXPECT_EQ(std::filesystem::file_size(log(2)), rollOverSize);
}

TEST_F(LogRollOver, BeginsTheNewLogWithItsHeaderAndTheRemark) {
    fillTo(rollOverSize);
    EXPECT_THAT(entries(log(1)),
                ElementsAre(HasSubstr("Log started: "), "Version: 1.2.3", HasSubstr("Path: "),
                            HasSubstr("System: macOS "), "Running in 64-bit mode", "Log truncated at 500KB"));
    EXPECT_EQ(KZLog::sharedController()->bytesWritten(), std::filesystem::file_size(log(1)));
}

TEST_F(LogRollOver, LeavesTheNextEntriesToTheNewLogBehindTheRemark) {
    KZLogTesting::queue().setSuspended(true);
    KZLog::fastAppendLog("before");
    KZLog::fastAppendLog("%@", std::string(rollOverSize, 'x'));
    KZLog::fastAppendLog("after");
    KZLogTesting::queue().setSuspended(false);
    EXPECT_THAT(entries(), ElementsAre("Log truncated at 500KB", "after"));
    EXPECT_THAT(read(log(2)), HasSubstr(" - before\n"));
}

TEST_F(LogRollOver, CountsBytesNotCharacters) {
    std::string text;
    for (int part = 0; part < 250000; ++part) {
        text += "é";
    }
    KZLog::fastAppendLog("%@", text);
    KZLog::finishWriting();
    EXPECT_TRUE(stands(log(2)));
}

TEST_F(LogRollOver, KeepsFiveLogsAndLosesNoEntryInBetween) {
    for (int number = 0; number < 25000; ++number) {
        KZLog::fastAppendLog("entry %i %@", number, "that is of an ordinary length for a log entry");
    }
    KZLog::finishWriting();
    std::vector<int> numbers;
    for (int file = 5; file >= 1; --file) {
        for (const std::string& text : entries(log(file))) {
            if (text.starts_with("entry ")) {
                numbers.push_back(std::stoi(text.substr(6)));
            }
        }
    }
    ASSERT_FALSE(numbers.empty());
    EXPECT_EQ(numbers.back(), 24999);
    for (std::size_t at = 1; at < numbers.size(); ++at) {
        ASSERT_EQ(numbers[at], numbers[at - 1] + 1);
    }
    EXPECT_FALSE(stands(log(6)));
    EXPECT_LT(std::filesystem::file_size(log(2)), rollOverSize + 100);
    EXPECT_GE(std::filesystem::file_size(log(2)), rollOverSize);
}

TEST_F(LogRollOver, LeavesNothingInTheCountOfTheQueue) {
    fillTo(rollOverSize);
    EXPECT_EQ(KZLog::sharedController()->bytesInQueue(), 0U);
}

TEST_F(LogRollOver, FromAWorkerThreadDoesNotWaitForItself) {
    onAnotherThread([] {
        fillTo(rollOverSize - 40);
        KZLog::appendLog("the entry that fills the log");
    });
    EXPECT_THAT(entries(), ElementsAre("Log truncated at 500KB"));
}

TEST_F(LogRollOver, GoesOnInTheOldFileWhenItCannotBeMoved) {
    files.alwaysFail(Operation::moveItem, EACCES);
    EXPECT_EQ(printed([] {
                  fillTo(rollOverSize);
                  KZLog::fastAppendLog("after");
              }),
              "Unable to move file " + log(1) + " to " + log(2) + ".\n");
    const Lines all = entries(log(1));
    EXPECT_THAT(Lines(all.end() - 2, all.end()), ElementsAre("Log truncated at 500KB", "after"));
}

TEST_F(LogRollOver, SwitchesLoggingOffWhenThePreferencesSaySoByThen) {
    setPreference({.value = true});
    EXPECT_EQ(printed([] {
                  fillTo(rollOverSize);
                  KZLog::fastAppendLog("after");
              }),
              "Logging is disabled\n");
    EXPECT_EQ(std::filesystem::file_size(log(1)), rollOverSize);
    EXPECT_FALSE(stands(log(2)));
}

TEST_F(LogRollOver, EndsEvenWhenTheHeaderFillsALog) {
    bundle.info["CFBundleVersion"] = {.value = std::string(600000, '9')};
    fillTo(rollOverSize);
    EXPECT_EQ(entries(log(1)).back(), "Log truncated at 500KB");
    EXPECT_FALSE(stands(log(3)));
}

}  // namespace
