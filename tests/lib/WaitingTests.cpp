#include "lib/KZFileManager/Waiting.h"

#include <unistd.h>

#include <atomic>
#include <limits>

#include "lib/KZTaskEx.h"
#include "tests/lib/FilesFixture.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Clock = std::chrono::steady_clock;

class Waiting : public FilesFixture {
protected:
    static Clock::duration timeOf(const std::function<void()>& work) {
        const auto start = Clock::now();
        work();
        return Clock::now() - start;
    }
    std::string addAged(const std::string& name, std::chrono::milliseconds age) {
        auto path = add(name);
        KZFileManager::setModificationDate(std::chrono::system_clock::now() - age, path);
        return path;
    }
    static std::string waitingFor(const std::string& path) {
        return "File " + path + " is currently being written to. Waiting...";
    }
    static std::string finished(const std::string& path) { return "File " + path + " finished writing."; }
};

class WaitingForAFileToAppear : public Waiting {
protected:
    static std::string notYet(const std::string& path) { return "File " + path + " is not yet created. Waiting..."; }
};

TEST_F(WaitingForAFileToAppear, IsOverForAFileWithContents) {
    KZFileManager::waitForFileCreation(add("file"), 10s);
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(WaitingForAFileToAppear, LogsOnceForAnEmptyFileAndReturnsSoon) {
    const auto file = add("file", "");
    EXPECT_LT(timeOf([&] { KZFileManager::waitForFileCreation(file, 10s); }), 5s);
    EXPECT_THAT(newLogEntries(), ElementsAre(notYet(file)));
}

TEST_F(WaitingForAFileToAppear, LogsForAMissingFileAndForALinkThatLeadsNowhere) {
    const auto link = addLink("link", "nowhere");
    KZFileManager::waitForFileCreation(disk / "missing", 1s);
    KZFileManager::waitForFileCreation(link, 1s);
    EXPECT_THAT(newLogEntries(), ElementsAre(notYet(disk / "missing"), notYet(link)));
}

TEST_F(WaitingForAFileToAppear, SleepsHalfAMillisecond) {
    EXPECT_GE(timeOf([&] { KZFileManager::waitForFileCreation(disk / "missing", 1s); }), 500us);
}

TEST_F(WaitingForAFileToAppear, WithoutTimeNeitherLogsNorSleeps) {
    for (const auto timeout : {0s, -1s, std::chrono::seconds::min()}) {
        KZFileManager::waitForFileCreation(disk / "missing", timeout);
    }
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(WaitingForAFileToAppear, TakesAnyTime) {
    KZFileManager::waitForFileCreation(disk / "missing", std::chrono::seconds::max());
    EXPECT_EQ(newLogEntries().size(), 1U);
}

class WaitingForWrites : public Waiting {};

TEST_F(WaitingForWrites, IsOverForAnOldFileWithoutALogLine) {
    const auto file = addAged("file", 10s);
    EXPECT_LT(timeOf([&] { KZFileManager::waitForFileWrites(file); }), 4s);
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(WaitingForWrites, LastsUntilTheFileIsFiveSecondsOld) {
    const auto file = addAged("file", 4s);
    const auto time = timeOf([&] { KZFileManager::waitForFileWrites(file); });
    EXPECT_GT(time, 500ms);
    EXPECT_LT(time, 4s);
    EXPECT_THAT(newLogEntries(), ElementsAre(waitingFor(file), finished(file)));
}

TEST_F(WaitingForWrites, GoesOnWhileTheFileIsWrittenTo) {
    const auto file = addAged("file", 4500ms);
    std::jthread writer([&] {
        std::this_thread::sleep_for(200ms);
        KZFileManager::setModificationDate(std::chrono::system_clock::now() - 4s, file);
    });
    EXPECT_GT(timeOf([&] { KZFileManager::waitForFileWrites(file); }), 900ms);
}

TEST_F(WaitingForWrites, GoesOnForAFileFromTheFuture) {
    const auto file = addAged("file", -10s);
    std::jthread writer([&] {
        std::this_thread::sleep_for(200ms);
        KZFileManager::setModificationDate(std::chrono::system_clock::now() - 10s, file);
    });
    EXPECT_GE(timeOf([&] { KZFileManager::waitForFileWrites(file); }), 150ms);
    EXPECT_THAT(newLogEntries(), ElementsAre(waitingFor(file), finished(file)));
}

TEST_F(WaitingForWrites, GoesOnWhileTheFileIsMissing) {
    const std::string file = disk / "file";
    std::jthread writer([&] {
        std::this_thread::sleep_for(200ms);
        const auto other = addAged("other", 10s);
        std::filesystem::rename(other, file);
    });
    EXPECT_GE(timeOf([&] { KZFileManager::waitForFileWrites(file); }), 150ms);
    EXPECT_THAT(newLogEntries(), ElementsAre(waitingFor(file), finished(file)));
}

TEST_F(WaitingForWrites, LogsBothLinesForAnOldFileWithALockFileAndReturns) {
    const auto file = addAged("file", 10s);
    const auto lock = add("lock", "");
    EXPECT_LT(timeOf([&] { KZFileManager::waitForFileWrites(file, lock); }), 4s);
    EXPECT_THAT(newLogEntries(), ElementsAre(waitingFor(file), finished(file)));
    EXPECT_TRUE(stands(lock));
}

TEST_F(WaitingForWrites, IsOverForAnOldFileWhoseLockFileIsMissing) {
    KZFileManager::waitForFileWrites(addAged("file", 10s), disk / "missing");
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(WaitingForWrites, LooksAtTheLockFileOnlyForAnOldFileAndOnce) {
    const auto young = addAged("young", 4800ms);
    const auto old = addAged("old", 10s);
    const auto lock = add("lock");
    const auto looks = [&](const std::string& file) {
        files.forgetCalls();
        KZFileManager::waitForFileWrites(file, lock);
        const auto calls = files.calls();
        return std::count_if(calls.begin(), calls.end(), [&](const Call& call) { return call.path == lock; });
    };
    EXPECT_EQ(looks(young), 0);
    EXPECT_EQ(looks(old), 1);
}

class OpenForWriting : public Waiting {
protected:
    void answerWith(const std::string& script) {
        processes.substitutes["/usr/sbin/lsof"] = add("lsof", "#!/bin/bash\n" + script + "\n");
        std::filesystem::permissions(disk / "lsof", std::filesystem::perms::all);
    }
    bool openForWriting(const std::string& answer) {
        answerWith("printf '" + answer + "'");
        return KZFileManager::fileIsOpenForWriting(disk / "file");
    }
};

TEST_F(OpenForWriting, AsksTheHostsToolWithThreeArguments) {
    answerWith("exit 1");
    KZFileManager::fileIsOpenForWriting("/a b");
    EXPECT_THAT(processes.commands().back().arguments, ElementsAre("-F a", "-w", "/a b"));
}

TEST_F(OpenForWriting, IsAnswerThatHoldsAWOrAU) {
    EXPECT_TRUE(openForWriting("p123\\naw\\n"));
    EXPECT_TRUE(openForWriting("p123\\nau\\n"));
    EXPECT_TRUE(openForWriting("p1\\nar\\np2\\nau\\n"));
}

TEST_F(OpenForWriting, IsNotAnswerOfReadersAlone) {
    EXPECT_FALSE(openForWriting("p123\\nar\\n"));
    EXPECT_FALSE(openForWriting(""));
    EXPECT_FALSE(openForWriting("p1 W U"));
}

TEST_F(OpenForWriting, LooksAtEveryWordOfTheAnswer) {
    EXPECT_TRUE(openForWriting("p123 found\\nar\\n"));
    EXPECT_TRUE(openForWriting("ar\\tshown"));
}

TEST_F(OpenForWriting, TakesComplaintsOfASilentToolForItsAnswer) {
    answerWith("echo 'status unknown' >&2; exit 1");
    EXPECT_TRUE(KZFileManager::fileIsOpenForWriting(disk / "file"));
}

TEST_F(OpenForWriting, IsNotWithoutATool) {
    processes.substitutes["/usr/sbin/lsof"] = "/no/such/tool";
    EXPECT_FALSE(KZFileManager::fileIsOpenForWriting(disk / "file"));
}

TEST_F(OpenForWriting, IsNotWhenTheAnswerIsNoText) { EXPECT_FALSE(openForWriting("aw \\377")); }

TEST_F(OpenForWriting, IsNotWhenTheToolTakesTooLong) {
    answerWith("exec sleep 60");
    // Off the main thread, whose events this thread serves meanwhile.
    std::atomic<bool> done = false;
    bool open = true;
    std::jthread worker([&] {
        open = KZFileManager::fileIsOpenForWriting(disk / "file");
        done = true;
    });
    const auto time = timeOf([&] {
        while (!done) {
            mainThread.runNextEvent(10ms);
        }
    });
    worker.join();
    EXPECT_FALSE(open);
    EXPECT_LT(time, 30s);
}

class OpenForWritingByTheShippedTool : public Waiting {
protected:
    OpenForWritingByTheShippedTool() { processes.substitutes["/usr/sbin/lsof"] = WICKFIELD_LSOF; }

    std::string answer(const std::string& path) {
        return KZTaskEx::stringFromTask(WICKFIELD_LSOF, {"-F a", "-w", path}).value_or("no text");
    }
    const std::string file = add("file w u");
    const std::string own = "p" + std::to_string(::getpid()) + "\n";
};

TEST_F(OpenForWritingByTheShippedTool, IsNotAFileThatNobodyHas) {
    EXPECT_FALSE(KZFileManager::fileIsOpenForWriting(file));
    EXPECT_EQ(answer(file), "");
}

TEST_F(OpenForWritingByTheShippedTool, IsNotAFileThatIsOnlyRead) {
    const std::ifstream reader(file);
    EXPECT_FALSE(KZFileManager::fileIsOpenForWriting(file));
    EXPECT_EQ(answer(file), own + "ar\n");
}

TEST_F(OpenForWritingByTheShippedTool, IsAFileThatIsWritten) {
    const std::ofstream writer(file, std::ios::app);
    EXPECT_TRUE(KZFileManager::fileIsOpenForWriting(file));
    EXPECT_EQ(answer(file), own + "aw\n");
}

TEST_F(OpenForWritingByTheShippedTool, IsAFileThatIsReadAndWritten) {
    const std::fstream both(file, std::ios::in | std::ios::out);
    EXPECT_TRUE(KZFileManager::fileIsOpenForWriting(file));
    EXPECT_EQ(answer(file), own + "au\n");
}

TEST_F(OpenForWritingByTheShippedTool, IsSeenThroughALinkAndAnotherName) {
    std::filesystem::create_hard_link(file, disk / "other");
    const std::ofstream writer(file, std::ios::app);
    EXPECT_TRUE(KZFileManager::fileIsOpenForWriting(addLink("link", file)));
    EXPECT_TRUE(KZFileManager::fileIsOpenForWriting(disk / "other"));
}

TEST_F(OpenForWritingByTheShippedTool, IsNotAMissingFile) {
    EXPECT_FALSE(KZFileManager::fileIsOpenForWriting(disk / "missing"));
    EXPECT_FALSE(KZFileManager::fileIsOpenForWriting(""));
}

class RegisteringAnApplication : public Waiting {};

TEST_F(RegisteringAnApplication, HandsTheBundleToTheHost) {
    EXPECT_TRUE(KZFileManager::registerApplicationWithLaunchServices("/Applications/Gantry.app"));
    EXPECT_THAT(workspace.registered, ElementsAre("/Applications/Gantry.app"));
}

TEST_F(RegisteringAnApplication, IsFalseWhenTheHostRefuses) {
    workspace.registerFailure = platform::Error{1, "no"};
    EXPECT_FALSE(KZFileManager::registerApplicationWithLaunchServices("/Applications/Gantry.app"));
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

}  // namespace
