#include <unistd.h>

#include <cerrno>

#include "tests/lib/LogFixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

class LogFiles : public LogFixture {};

TEST_F(LogFiles, BeginWithAHeader) {
    KZLog::createNewLog("Test");
    KZLog::finishWriting();
    EXPECT_THAT(entries(log(1)), ElementsAre(MatchesRegex("Log started: ....-..-.. ..:..:.. \\+0000"), "Version: 1.2.3",
                                             "Path: /Fake.app/Contents/Linux/Fake",
                                             "System: macOS 12.0, 2 CPU(s), 8.00 GB RAM", "Running in 64-bit mode"));
}

TEST_F(LogFiles, LeaveOutWhatTheBundleDoesNotSay) {
    bundle.info.clear();
    bundle.executable = "";
    KZLog::createNewLog("Test");
    KZLog::finishWriting();
    EXPECT_THAT(entries(log(1)), ElementsAre(HasSubstr("Log started"), HasSubstr("System:"), HasSubstr("64-bit")));
}

TEST_F(LogFiles, ShowAVersionThatIsANumber) {
    bundle.info["CFBundleVersion"] = {.value = std::int64_t{42}};
    KZLog::createNewLog("Test");
    KZLog::finishWriting();
    EXPECT_THAT(entries(log(1)), testing::Contains("Version: 42"));
}

TEST_F(LogFiles, AreShiftedDownAndTheOldestDropped) {
    for (int number = 1; number <= 5; ++number) {
        write(log(number), "was " + std::to_string(number));
    }
    KZLog::createNewLog("Test");
    KZLog::finishWriting();
    EXPECT_THAT((Lines{read(log(2)), read(log(3)), read(log(4)), read(log(5))}),
                ElementsAre("was 1", "was 2", "was 3", "was 4"));
    EXPECT_THAT(entries(log(1)).front(), HasSubstr("Log started"));
    EXPECT_FALSE(stands(log(6)));
}

TEST_F(LogFiles, KeepGapsAsTheyShift) {
    write(log(1), "was 1");
    write(log(3), "was 3");
    KZLog::createNewLog("Test");
    EXPECT_EQ(read(log(2)), "was 1");
    EXPECT_EQ(read(log(4)), "was 3");
    EXPECT_FALSE(stands(log(3)));
    EXPECT_FALSE(stands(log(5)));
}

TEST_F(LogFiles, AreNotShiftedWithoutACurrentOne) {
    write(log(2), "was 2");
    write(log(5), "was 5");
    KZLog::createNewLog("Test");
    EXPECT_EQ(read(log(2)), "was 2");
    EXPECT_EQ(read(log(5)), "was 5");
    EXPECT_TRUE(stands(log(1)));
}

TEST_F(LogFiles, AreListedNewestFirst) {
    for (const int number : {4, 1, 5}) {
        write(log(number), "x");
    }
    KZLog::sharedController();
    bundle.executable = "/Fake.app/Contents/Linux/Test.bin";
    EXPECT_THAT(KZLog::availableLogs(), ElementsAre(log(1), log(4), log(5)));
}

TEST_F(LogFiles, AreNoneWithoutALibrary) {
    folders.paths.clear();
    EXPECT_THAT(KZLog::availableLogs(), IsEmpty());
}

TEST_F(LogFiles, KeepTheFirstName) {
    KZLog::createNewLog("First");
    KZLog::createNewLog("Second");
    EXPECT_EQ(KZLog::sharedController()->appName(), "First");
    EXPECT_TRUE(stands(log(2, "First")));
    EXPECT_FALSE(stands(log(1, "Second")));
}

TEST_F(LogFiles, AreNamedAfterTheExecutableWithoutItsExtension) {
    bundle.executable = "/Fake.app/Contents/Linux/My Installer.bin";
    KZLog::createNewLog();
    EXPECT_TRUE(stands(log(1, "My Installer")));
}

TEST_F(LogFiles, AreNamedUnknownWithoutAnyName) {
    bundle.executable = "";
    KZLog::createNewLog();
    EXPECT_TRUE(stands(log(1, "Unknown")));
    EXPECT_EQ(KZLog::sharedController()->appName(), "Unknown");
}

TEST_F(LogFiles, AreNamedUnknownForAnEmptyName) {
    KZLog::createNewLog("");
    EXPECT_TRUE(stands(log(1, "Unknown")));
}

TEST_F(LogFiles, OfTheSuperuserHaveTheCurrentOneInTheMachineWideLibrary) {
    becomeSuperuser();
    const std::string current = localLibrary + "/Logs/Corvane/Test.1.log";
    std::filesystem::create_directories(localLibrary + "/Logs/Corvane");
    KZLog::createNewLog("Test");
    KZLog::finishWriting();
    EXPECT_THAT(entries(current).front(), HasSubstr("Log started"));
    EXPECT_TRUE(stands(logs));
    EXPECT_FALSE(stands(log(1)));
    EXPECT_THAT(KZLog::availableLogs(), IsEmpty());
}

TEST_F(LogFiles, OfTheSuperuserAreShiftedInTheUsersFolderAllTheSame) {
    becomeSuperuser();
    const std::string current = localLibrary + "/Logs/Corvane/Test.1.log";
    write(current, "machine-wide");
    write(log(1), "was 1");
    KZLog::createNewLog("Test");
    KZLog::finishWriting();
    EXPECT_EQ(read(log(2)), "was 1");
    EXPECT_FALSE(stands(localLibrary + "/Logs/Corvane/Test.2.log"));
    EXPECT_THAT(read(current), testing::Not(HasSubstr("machine-wide")));
}

TEST_F(LogFiles, OfTheSuperuserNeedTheMachineWideFolderWhichNobodyMakes) {
    becomeSuperuser();
    const std::string current = localLibrary + "/Logs/Corvane/Test.1.log";
    EXPECT_THAT(printed([] { KZLog::createNewLog("Test"); }),
                testing::StartsWith("Unable to create log file " + current + " - "));
    EXPECT_TRUE(stands(logs));
    EXPECT_FALSE(stands(localLibrary));
}

TEST_F(LogFiles, CannotBeMadeForTheSuperuserWhileNobodyIsAtTheConsole) {
    becomeSuperuser();
    identity.console = std::nullopt;
    EXPECT_EQ(printed([] { KZLog::createNewLog("Test"); }), "Unable to create folder (null).\n");
    EXPECT_FALSE(stands(localLibrary));
}

TEST_F(LogFiles, SayWhenTheirFolderCannotBeMade) {
    write(userLibrary + "/Logs", "a file in the way");
    EXPECT_EQ(printed([] { KZLog::createNewLog("Test"); }), "Unable to create folder " + logs + ".\n");
}

TEST_F(LogFiles, SayWhenOneCannotBeMovedAndStop) {
    write(log(1), "was 1");
    write(log(3), "was 3");
    files.fails = [this](const auto& call) {
        return call.operation == Operation::moveItem && call.path == log(1) ? std::optional(EACCES) : std::nullopt;
    };
    EXPECT_EQ(printed([] { KZLog::createNewLog("Test"); }), "Unable to move file " + log(1) + " to " + log(2) + ".\n");
    EXPECT_EQ(read(log(1)), "was 1");
    EXPECT_EQ(read(log(4)), "was 3");
}

TEST_F(LogFiles, SurviveAnOldestLogThatCannotBeRemoved) {
    write(log(1), "was 1");
    write(log(5), "was 5");
    files.alwaysFail(Operation::removeItem, EACCES);
    EXPECT_EQ(printed([] { KZLog::createNewLog("Test"); }), "");
    EXPECT_EQ(read(log(2)), "was 1");
    EXPECT_EQ(read(log(5)), "was 5");
}

TEST_F(LogFiles, SayWhenTheNewOneCannotBeWritten) {
    files.alwaysFail(Operation::writeAtomically, ENOSPC);
    EXPECT_EQ(printed([] { KZLog::createNewLog("Test"); }),
              "Unable to create log file " + log(1) + " - " + log(1) + ": No space left on device\n");
}

TEST_F(LogFiles, ThatWereShiftedBeforeTheNewOneFailedTakeNoMoreEntries) {
    KZLog::createNewLog("Test");
    KZLog::finishWriting();
    files.alwaysFail(Operation::writeAtomically, ENOSPC);
    EXPECT_THAT(printed([] {
                    KZLog::createNewLog("Test");
                    KZLog::fastAppendLog("lost");
                }),
                HasSubstr("Unable to log the following information: lost\nUnable to open log for output\n"));
    EXPECT_EQ(entries(log(2)).back(), "Running in 64-bit mode");
}

TEST_F(LogFiles, SayNothingWhenTheNewOneCannotBeOpened) {
    files.alwaysFail(Operation::openForAppending, EMFILE);
    EXPECT_EQ(printed([] { KZLog::createNewLog("Test"); }), "");
    EXPECT_EQ(read(log(1)), "");
}

TEST_F(LogFiles, SayNothingAtAllWhenPrintingIsOff) {
    write(userLibrary + "/Logs", "a file in the way");
    KZLog::sharedController()->setNoPrinting(true);
    EXPECT_EQ(printed([] { KZLog::createNewLog("Test"); }), "");
}

TEST_F(LogFiles, InAReadOnlyFolderAreLeftAsTheyAre) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "nothing is read-only for the superuser";
    }
    write(log(1), "was 1");
    std::filesystem::permissions(logs, std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    const std::string said = printed([] { KZLog::createNewLog("Test"); });
    std::filesystem::permissions(logs, std::filesystem::perms::owner_all);
    EXPECT_EQ(said, "Unable to move file " + log(1) + " to " + log(2) + ".\n");
    EXPECT_EQ(read(log(1)), "was 1");
}

class LogPreferences : public LogFixture, public testing::WithParamInterface<platform::PropertyValue> {};

class SwitchingLogOff : public LogPreferences {};

TEST_P(SwitchingLogOff, IsSaidOnceAndHoldsForTheProcess) {
    setPreference(GetParam());
    EXPECT_EQ(printed([] {
                  KZLog::createNewLog("Test");
                  KZLog::createNewLog("Test");
                  KZLog::appendLogAndPrint("text");
              }),
              "Logging is disabled\n");
    EXPECT_TRUE(KZLog::loggingDisabled());
    EXPECT_FALSE(stands(logs));
}

INSTANTIATE_TEST_SUITE_P(Values, SwitchingLogOff,
                         testing::Values(platform::PropertyValue{.value = std::string("1")},
                                         platform::PropertyValue{.value = std::int64_t{1}},
                                         platform::PropertyValue{.value = 1.0},
                                         platform::PropertyValue{.value = true}));

class LeavingLogOn : public LogPreferences {};

TEST_P(LeavingLogOn, IsWhatAnyOtherValueDoes) {
    setPreference(GetParam());
    EXPECT_EQ(printed([] { KZLog::createNewLog("Test"); }), "");
    EXPECT_TRUE(stands(log(1)));
}

INSTANTIATE_TEST_SUITE_P(Values, LeavingLogOn,
                         testing::Values(platform::PropertyValue{.value = std::string("0")},
                                         platform::PropertyValue{.value = std::string("yes")},
                                         platform::PropertyValue{.value = std::string(" 1")},
                                         platform::PropertyValue{.value = std::int64_t{2}},
                                         platform::PropertyValue{.value = 1.5}, platform::PropertyValue{.value = false},
                                         platform::PropertyValue{.value = platform::PropertyArray{}}));

TEST_F(LogPreferences, ThatAreNoPropertyListLeaveTheLogOn) {
    write(userLibrary + "/Preferences/com.corvane.global.plist", "<plist><dict><key>disable-logging</key>");
    KZLog::createNewLog("Test");
    EXPECT_TRUE(stands(log(1)));
}

TEST_F(LogPreferences, OfTheSuperuserAreTheConsoleUsers) {
    becomeSuperuser();
    setPreference({.value = true});
    EXPECT_EQ(printed([] { KZLog::createNewLog("Test"); }), "Logging is disabled\n");
}

TEST_F(LogPreferences, SwitchTheLogOffSilentlyWhenPrintingIsOff) {
    setPreference({.value = true});
    KZLog::sharedController()->setNoPrinting(true);
    EXPECT_EQ(printed([] { KZLog::createNewLog("Test"); }), "");
    EXPECT_TRUE(KZLog::loggingDisabled());
}

}  // namespace
