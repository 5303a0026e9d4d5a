#include "lib/KZLog.h"

#include <sys/resource.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <set>
#include <stdexcept>

#include "lib/base/Text.h"
#include "tests/lib/LogFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

class LogEntries : public LogFixture {
protected:
    LogEntries() { KZLog::createNewLog("Test"); }
};

TEST_F(LogEntries, CarryTheirDateAndText) {
    KZLog::fastAppendLog("File: %@", "x.vst3");
    KZLog::finishWriting();
    const std::string text = read(log(1));
    const std::string last = text.substr(text.rfind('\n', text.size() - 2) + 1);
    EXPECT_THAT(last, MatchesRegex("20..-..-.. ..:..:.. \\+0000 - File: x.vst3\n"));
}

TEST_F(LogEntries, AreTrimmedAtBothEnds) {
    KZLog::fastAppendLog("\n\t text \u00A0\n");
    KZLog::appendLog(" %@ ", " inner ");
    KZLog::appendLogAndDebugPrint("  debug\n");
    EXPECT_THAT(entries(), ElementsAre("text", "inner", "debug"));
}

TEST_F(LogEntries, OfWhiteSpaceAloneAreNone) {
    KZLog::finishWriting();
    KZLog::fastAppendLog(" \n\t ");
    KZLog::appendLog("%@", "");
    EXPECT_EQ(KZLog::sharedController()->bytesInQueue(), 0U);
    EXPECT_THAT(entries(), IsEmpty());
}

TEST_F(LogEntries, WithoutAFormatAreNone) {
    const std::optional<std::string> none;
    KZLog::fastAppendLog(none);
    KZLog::appendLog(std::nullopt, 1);
    KZLog::appendLogAndPrint(static_cast<const char*>(nullptr));
    EXPECT_THAT(entries(), IsEmpty());
}

TEST_F(LogEntries, KeepThePercentSignsOfProse) {
    KZLog::appendLog("50% done");
    KZLog::appendLog("100%.");
    KZLog::appendLog("a %! b %, c %- d %; e %: f %+ g %");
    EXPECT_THAT(entries(), ElementsAre("50% done", "100%.", "a %! b %, c %- d %; e %: f %+ g %"));
}

TEST_F(LogEntries, ShowTextsWithPercentSignsAsTheyAre) {
    KZLog::appendLog("%@", "50% of %@ %s %n");
    KZLog::appendLogAndDebugPrint("%@", "%@ 100%");
    EXPECT_THAT(entries(), ElementsAre("50% of %@ %s %n", "%@ 100%"));
}

TEST_F(LogEntries, SurviveHostileFormats) {
    KZLog::appendLog("%n %s %@%@%@ %999999999i", "one");
    KZLog::appendLog(std::string(50, '%'));
    EXPECT_THAT(entries(), ElementsAre("%n one %@%@%@ %999999999i", std::string(17, '%')));
}

TEST_F(LogEntries, CarryAMegabyteOfText) {
    const std::string text(1 << 20, 'x');
    KZLog::appendLog("%@", text);
    KZLog::finishWriting();
    EXPECT_EQ(entries(log(2)).back(), text);
}

TEST_F(LogEntries, KeepTheirOrder) {
    Lines expected;
    for (int number = 0; number < 2000; ++number) {
        expected.push_back("entry " + std::to_string(number));
        KZLog::fastAppendLog("entry %i", number);
    }
    EXPECT_EQ(entries(), expected);
}

TEST_F(LogEntries, FromManyThreadsAreAllWritten) {
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([thread] {
            for (int number = 0; number < 500; ++number) {
                number % 2 == 0 ? KZLog::fastAppendLog("entry %i of %i", number, thread)
                                : KZLog::appendLog("entry %i of %i", number, thread);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const Lines written = entries();
    EXPECT_EQ(std::set<std::string>(written.begin(), written.end()).size(), 2000U);
    EXPECT_EQ(KZLog::sharedController()->bytesInQueue(), 0U);
}

TEST_F(LogEntries, PutThroughDebugPrintGoNowhere) {
    EXPECT_EQ(printed([] { KZLog::debugPrint("text %@", 1); }), "");
    EXPECT_THAT(entries(), IsEmpty());
}

TEST_F(LogEntries, AreNotPrintedUnlessAsked) {
    EXPECT_EQ(printed([] {
                  KZLog::fastAppendLog("fast");
                  KZLog::appendLog("plain");
                  KZLog::appendLogAndDebugPrint("debug");
              }),
              "");
}

TEST_F(LogEntries, ArePrintedTrimmedWithALineBreak) {
    EXPECT_EQ(printed([] { KZLog::appendLogAndPrint("  %@\n", "text"); }), "text\n");
    EXPECT_THAT(entries(), ElementsAre("text"));
}

TEST_F(LogEntries, ArePrintedWithoutObjectSignsAndWithPercentSignsDoubled) {
    EXPECT_EQ(printed([] { KZLog::appendLogAndPrint("%@", std::string("a%@b 50% c\0d", 12)); }), "ab 50%% cd\n");
    EXPECT_THAT(entries(), ElementsAre(std::string("a%@b 50% c\0d", 12)));
}

TEST_F(LogEntries, AreNotPrintedWhenPrintingIsOff) {
    KZLog::sharedController()->setNoPrinting(true);
    EXPECT_EQ(printed([] { KZLog::appendLogAndPrint("text"); }), "");
    EXPECT_THAT(entries(), ElementsAre("text"));
}

struct Escaping {
    const char* text;
    const char* escaped;
};

class LogEscaping : public testing::TestWithParam<Escaping> {};

TEST_P(LogEscaping, DoublesPercentSignsThatAreText) {
    EXPECT_EQ(KZLog::escapeTextForLogging(GetParam().text), GetParam().escaped);
}

INSTANTIATE_TEST_SUITE_P(Rows, LogEscaping,
                         testing::Values(Escaping{"plain", "plain"}, Escaping{"", ""},
                                         Escaping{"50% done", "50%% done"}, Escaping{"%.", "%%."},
                                         Escaping{"%!", "%%!"}, Escaping{"%,", "%%,"}, Escaping{"%-", "%%-"},
                                         Escaping{"%;", "%%;"}, Escaping{"%:", "%%:"}, Escaping{"%+", "%%+"},
                                         Escaping{"50%% done", "50%% done"}, Escaping{"%%%", "%%"},
                                         Escaping{"%%%%", "%%%"}, Escaping{"%%", "%%"},
                                         Escaping{"%@ %li %0.2f %s %", "%@ %li %0.2f %s %"}, Escaping{"%.2f", "%%.2f"},
                                         Escaping{"%-5i", "%%-5i"}));

class LogWaiting : public LogFixture {
protected:
    LogWaiting() {
        KZLog::createNewLog("Test");
        KZLog::finishWriting();
    }
    bool isWritten(const std::string& text) const { return read(log(1)).find(text) != std::string::npos; }

    // Whether the call still waits while the queue is held.
    static bool waits(const std::function<void()>& call) {
        using namespace std::chrono_literals;
        KZLogTesting::queue().setSuspended(true);
        std::atomic<bool> returned = false;
        std::thread caller([&] {
            call();
            returned = true;
        });
        std::this_thread::sleep_for(100ms);
        const bool waiting = !returned;
        KZLogTesting::queue().setSuspended(false);
        caller.join();
        return waiting;
    }
};

TEST_F(LogWaiting, PutsAShortTextOffTheMainThreadOnDiskBeforeItReturns) {
    onAnotherThread([this] {
        KZLog::appendLog("%@", "short");
        EXPECT_TRUE(isWritten("short"));
    });
}

TEST_F(LogWaiting, HappensForShortTextsOnly) {
    EXPECT_TRUE(waits([] { KZLog::appendLog(std::string(99, 'x')); }));
    EXPECT_FALSE(waits([] { KZLog::appendLog(std::string(100, 'y')); }));
}

TEST_F(LogWaiting, CountsWhiteSpaceAroundATextUnlessItIsTrimmedBefore) {
    const std::string text = "\n " + std::string(99, 'x');
    KZLog::sharedController()->setNoPrinting(true);
    EXPECT_FALSE(waits([&] { KZLog::appendLog(text); }));
    KZLog::finishWriting();
    EXPECT_TRUE(waits([&] { KZLog::appendLogAndDebugPrint(text); }));
    EXPECT_TRUE(waits([&] { KZLog::appendLogAndPrint(text); }));
}

TEST_F(LogWaiting, DoesNotHappenForAnEmptyText) {
    EXPECT_FALSE(waits([] {
        KZLog::fastAppendLog("short");
        KZLog::appendLog("%@", "");
    }));
}

TEST_F(LogWaiting, CountsCharactersNotBytes) {
    std::string text;
    for (int part = 0; part < 99; ++part) {
        text += "é";
    }
    EXPECT_TRUE(waits([&] { KZLog::appendLog(text); }));
}

TEST_F(LogWaiting, DoesNotHappenBehindABacklogOfMoreThan99Characters) {
    EXPECT_FALSE(waits([] {
        KZLog::fastAppendLog(std::string(95, 'x'));
        KZLog::appendLog("yyyyy");
    }));
}

TEST_F(LogWaiting, NeverHappensForAFastEntry) {
    EXPECT_FALSE(waits([] { KZLog::fastAppendLog("short"); }));
}

TEST_F(LogWaiting, NeverHappensOnTheMainThread) {
    KZLogTesting::queue().setSuspended(true);
    KZLog::appendLog("short");
    EXPECT_FALSE(isWritten("short"));
    KZLogTesting::queue().setSuspended(false);
}

class LogWithoutBeginning : public LogFixture {
protected:
    LogWithoutBeginning() { bundle.executable = "/Fake.app/Contents/Linux/Test"; }
};

TEST_F(LogWithoutBeginning, AppendsToAnExistingFile) {
    write(log(1), "earlier\n");
    KZLog::appendLog("later");
    EXPECT_THAT(entries(), ElementsAre("earlier", "later"));
    EXPECT_EQ(KZLog::sharedController()->bytesWritten(), lineOverhead + 5);
}

TEST_F(LogWithoutBeginning, LosesEntriesAndSaysSoWhenThereIsNoFile) {
    EXPECT_EQ(printed([] {
                  KZLog::fastAppendLog("one");
                  KZLog::fastAppendLog("two %s", "50%");
              }),
              "Unable to log the following information: one\nUnable to open log for output\n"
              "Unable to log the following information: two 50%\nUnable to open log for output\n");
    EXPECT_FALSE(stands(log(1)));
    EXPECT_EQ(KZLog::sharedController()->bytesInQueue(), 0U);
}

TEST_F(LogWithoutBeginning, LosesEntriesSilentlyWhenPrintingIsOff) {
    KZLog::sharedController()->setNoPrinting(true);
    EXPECT_EQ(printed([] { KZLog::fastAppendLog("one"); }), "");
}

TEST_F(LogWithoutBeginning, FindsTheFileOnceItIsThere) {
    KZLog::sharedController()->setNoPrinting(true);
    KZLog::fastAppendLog("lost");
    KZLog::finishWriting();
    write(log(1), "");
    KZLog::fastAppendLog("kept");
    EXPECT_THAT(entries(), ElementsAre("kept"));
}

TEST_F(LogWithoutBeginning, AppendsForTheSuperuserToTheMachineWideFile) {
    becomeSuperuser();
    write(log(1), "");
    write(localLibrary + "/Logs/Corvane/Test.1.log", "");
    KZLog::fastAppendLog("text");
    KZLog::finishWriting();
    EXPECT_THAT(entries(localLibrary + "/Logs/Corvane/Test.1.log"), ElementsAre("text"));
    EXPECT_EQ(read(log(1)), "");
}

TEST_F(LogWithoutBeginning, LosesEntriesOfTheSuperuserWithoutAMachineWideLibrary) {
    becomeSuperuser();
    folders.paths.clear();
    EXPECT_THAT(printed([] { KZLog::fastAppendLog("text"); }), testing::EndsWith("Unable to open log for output\n"));
}

class LogTrouble : public LogEntries {
protected:
    using Append = std::function<platform::Failure()>;

    // What is printed about two entries that were queued together, on a host whose logs are appended to in that way.
    std::string saidOfTwoLostEntries(const Append& append) {
        AppendingBy appending(*platform::linux_host::services().files, append);
        platform::Host host = makeHost();
        host.files = &appending;
        KZLogTesting::beginAfresh();
        const platform::ScopedHost replaced(host);
        std::string said = printed([] {
            KZLogTesting::queue().setSuspended(true);
            KZLog::fastAppendLog("lost");
            KZLog::fastAppendLog("lost too");
            KZLogTesting::queue().setSuspended(false);
        });
        written = KZLog::sharedController()->bytesWritten();
        inQueue = KZLog::sharedController()->bytesInQueue();
        KZLogTesting::beginAfresh();
        return said;
    }

    std::uint64_t written = 0;
    std::uint64_t inQueue = 0;

private:
    class AppendingBy : public fakes::FailingFileManager {
    public:
        AppendingBy(platform::FileManager& real, Append append)
            : FailingFileManager(real), m_append(std::move(append)) {}
        std::unique_ptr<AppendHandle> openForAppending(const std::string&) override {
            return std::make_unique<Handle>(m_append);
        }

    private:
        class Handle : public AppendHandle {
        public:
            explicit Handle(Append append) : m_append(std::move(append)) {}
            platform::Failure append(std::string_view) override { return m_append(); }

        private:
            Append m_append;
        };
        Append m_append;
    };
};

TEST_F(LogTrouble, OfAFullDiskIsSaidForEachEntryAndEndsWithIt) {
    EXPECT_EQ(saidOfTwoLostEntries([] {
                  return platform::Error{ENOSPC, "No space left on device"};
              }),
              "Exception writing to log: No space left on device\n"
              "Exception writing to log: No space left on device\n");
    EXPECT_EQ(written, 0U);
    EXPECT_EQ(inQueue, 12U);
}

TEST_F(LogTrouble, ThatIsThrownByTheHostIsSaidAndEndsWithTheEntry) {
    EXPECT_EQ(saidOfTwoLostEntries([]() -> platform::Failure { throw std::runtime_error("no more room"); }),
              "Exception writing to log: no more room\nException writing to log: no more room\n");
    EXPECT_EQ(inQueue, 12U);
}

// For a scope, no file of this process grows beyond that many bytes: a write is cut short there, as by a full disk.
class FileSizeLimit {
public:
    explicit FileSizeLimit(std::uint64_t bytes) : m_signal(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limited{bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        (void)std::signal(SIGXFSZ, m_signal);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    void (*m_signal)(int);
    rlimit m_before{};
};

TEST_F(LogTrouble, OfADiskThatFillsUpWithinAnEntryLeavesTheNextOneALineOfItsOwn) {
    KZLog::sharedController()->setNoPrinting(true);
    KZLog::finishWriting();
    {
        const FileSizeLimit full(std::filesystem::file_size(log(1)) + lineOverhead + 3);
        KZLog::fastAppendLog("cut short");
        KZLog::finishWriting();
        KZLog::fastAppendLog("lost");
        KZLog::finishWriting();
    }
    KZLog::fastAppendLog("after");
    KZLog::fastAppendLog("and on");
    EXPECT_THAT(entries(), ElementsAre("cut ", "after", "and on"));
}

TEST_F(LogTrouble, OfADiskThatFillsUpBetweenEntriesLeavesNoEmptyLine) {
    KZLog::sharedController()->setNoPrinting(true);
    KZLog::finishWriting();
    {
        const FileSizeLimit full(std::filesystem::file_size(log(1)));
        KZLog::fastAppendLog("lost");
        KZLog::finishWriting();
    }
    KZLog::fastAppendLog("after");
    EXPECT_THAT(entries(), ElementsAre("after"));
}

TEST_F(LogTrouble, OfARemovedFileEndsWithTheNextRollOver) {
    KZLog::finishWriting();
    std::filesystem::remove(log(1));
    KZLog::fastAppendLog("lost with the file");
    KZLog::fastAppendLog(std::string(500000, 'x'));
    KZLog::fastAppendLog("kept");
    EXPECT_THAT(entries(), ElementsAre("Log truncated at 500KB", "kept"));
}

}  // namespace
