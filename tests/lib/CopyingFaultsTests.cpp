// Copies whose reading, writing or verification goes wrong.
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "tests/lib/CopyingFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string mixedContents = [] {
    std::string text(300001, '\0');
    unsigned value = 7;
    for (char& byte : text) {
        value = value * 1664525U + 1013904223U;
        byte = static_cast<char>(value >> 24U);
    }
    return text;
}();

class CopyingFaults : public CopyingFixture {
protected:
    const std::string source = add("source", mixedContents);
    const std::vector<std::string> three{disk / "a", disk / "b", disk / "c"};

    void expectNoneOfThree() {
        for (const std::string& path : three) {
            EXPECT_FALSE(stands(path)) << path;
        }
    }
};

TEST_F(CopyingFaults, ShortReadsAndInterruptionsMakeNoDifference) {
    openFiles.decide = [](const OpenCall& call) {
        Outcome outcome;
        if (call.operation == OpenOperation::read || call.operation == OpenOperation::write) {
            outcome.code = call.number % 5 == 0 ? EINTR : 0;
            outcome.atMost = 1 + call.number % 999;
        }
        return outcome;
    };

    EXPECT_TRUE(copy(source, three, Verification::sha256));
    EXPECT_EQ(read(disk / "a"), mixedContents);
    EXPECT_EQ(read(disk / "c"), mixedContents);
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(CopyingFaults, AWriteThatFailsOnceIsLoggedAndDoneAgain) {
    fail(OpenOperation::write, disk / "b", {.code = EIO}, {3});

    EXPECT_TRUE(copy(source, three));
    EXPECT_EQ(read(disk / "b"), mixedContents);
    EXPECT_THAT(newLogEntries(), ElementsAre("Error writing file " + (disk / "b") + ": 5"));
}

TEST_F(CopyingFaults, AWriteThatStopsHalfWayGoesOnFromThere) {
    openFiles.decide = [this](const OpenCall& call) {
        Outcome outcome;
        if (call.operation == OpenOperation::write && call.path == disk / "a") {
            outcome.atMost = call.number == 2 ? 1000 : outcome.atMost;
            outcome.code = call.number == 3 ? EIO : 0;
        }
        return outcome;
    };

    EXPECT_TRUE(copy(source, {disk / "a"}));
    EXPECT_EQ(read(disk / "a"), mixedContents);
    EXPECT_EQ(openFiles.count(OpenOperation::seek, disk / "a"), 1U);
}

TEST_F(CopyingFaults, AWriteThatFailsTwiceEndsTheCopyAndLeavesNothing) {
    fail(OpenOperation::write, disk / "b", {.code = ENOSPC}, {3, 4});

    EXPECT_FALSE(copy(source, three));
    expectNoneOfThree();
    EXPECT_THAT(newLogEntries(), ElementsAre("Error writing file " + (disk / "b") + ": 28",
                                             "Error writing file " + (disk / "b") + ": 28"));
    EXPECT_EQ(finished, 0);
}

TEST_F(CopyingFaults, AFileThatWasThereIsEmptyAfterwards) {
    add("a", "before");
    fail(OpenOperation::write, disk / "b", {.code = ENOSPC});

    EXPECT_FALSE(copy(source, three));
    EXPECT_TRUE(stands(disk / "a"));
    EXPECT_EQ(read(disk / "a"), "");
}

TEST_F(CopyingFaults, APositionThatCannotBeSetIsLoggedWithAllThatIsKnown) {
    openFiles.decide = [this](const OpenCall& call) {
        Outcome outcome;
        if (call.path == disk / "a") {
            outcome.code = call.operation == OpenOperation::write && call.number == 2 ? ENOSPC
                           : call.operation == OpenOperation::seek                    ? EINVAL
                                                                                      : 0;
        }
        return outcome;
    };

    EXPECT_FALSE(copy(source, {disk / "a"}));
    EXPECT_THAT(newLogEntries(), ElementsAre("Error writing file " + (disk / "a") + ": 28",
                                             "Error: unable to seek within file " + (disk / "a"), "cur pos: 65536",
                                             "read size: 65536", "errno: 22", "err: 28"));
    EXPECT_FALSE(stands(disk / "a"));
}

TEST_F(CopyingFaults, ADestinationThatTakesNothingAndRefusesNothingEndsTheCopy) {
    fail(OpenOperation::write, disk / "a", {.atMost = 0});

    EXPECT_FALSE(copy(source, {disk / "a"}));
    EXPECT_FALSE(stands(disk / "a"));
}

TEST_F(CopyingFaults, AReadErrorEndsTheCopyAndLeavesNothing) {
    fail(OpenOperation::read, source, {.code = EIO}, {4});

    EXPECT_FALSE(copy(source, three, Verification::md5));
    EXPECT_THAT(newLogEntries(), ElementsAre("Error reading file " + source + " - aborting..."));
    expectNoneOfThree();
}

TEST_F(CopyingFaults, AFileThatCannotBeEmptiedEndsTheCopy) {
    add("b", "before");
    fail(OpenOperation::truncate, disk / "b", {.code = EIO});

    EXPECT_FALSE(copy(source, three));
    EXPECT_THAT(newLogEntries(),
                ElementsAre("Error: Unable to open destination file " + (disk / "b") + ". Aborting copy process..."));
    EXPECT_FALSE(stands(disk / "a"));
}

TEST_F(CopyingFaults, FilesThatWereNotEmptiedYetKeepTheirContentsWhenOneCannotBe) {
    add("a", "before");
    add("b", "before");
    add("c", "before");
    fail(OpenOperation::truncate, disk / "b", {.code = EIO});

    EXPECT_FALSE(copy(source, three));
    EXPECT_EQ(read(disk / "a"), "");
    EXPECT_EQ(read(disk / "b"), "before");
    EXPECT_EQ(read(disk / "c"), "before");
}

TEST_F(CopyingFaults, WhatTheDiskTellsOnlyWhenTheFileIsClosedCountsToo) {
    fail(OpenOperation::close, disk / "b", {.code = EIO});

    EXPECT_FALSE(copy(source, three));
    EXPECT_THAT(newLogEntries(), ElementsAre("Error writing file " + (disk / "b") + ": 5"));
    EXPECT_FALSE(stands(disk / "b"));
    EXPECT_EQ(read(disk / "a"), mixedContents);
    EXPECT_EQ(finished, 0);
}

TEST_F(CopyingFaults, AFileThatWasThereIsEmptyWhenClosingItFails) {
    add("b", "before");
    fail(OpenOperation::close, disk / "b", {.code = EIO});

    EXPECT_FALSE(copy(source, three));
    EXPECT_TRUE(stands(disk / "b"));
    EXPECT_EQ(read(disk / "b"), "");
}

TEST_F(CopyingFaults, ACopyThatWasMovedAwayWhenClosingItFailsIsNotMadeAgain) {
    openFiles.decide = [this](const OpenCall& call) {
        if (call.operation == OpenOperation::close && call.path == disk / "a") {
            std::filesystem::rename(disk / "a", disk / "elsewhere");
            return Outcome{.code = EIO};
        }
        return Outcome{};
    };

    EXPECT_FALSE(copy(source, {disk / "a"}));
    EXPECT_FALSE(stands(disk / "a"));
}

TEST_F(CopyingFaults, AFileThatSomebodyElsePutInThePlaceOfThePartialOneStays) {
    openFiles.decide = [this](const OpenCall& call) {
        if (call.operation == OpenOperation::write && call.path == disk / "a" && call.number == 2) {
            std::filesystem::rename(add("other", "somebody's"), disk / "a");
            return Outcome{.code = ENOSPC};
        }
        return Outcome{.code = call.operation == OpenOperation::seek ? EIO : 0};
    };

    EXPECT_FALSE(copy(source, {disk / "a"}));
    EXPECT_EQ(read(disk / "a"), "somebody's");
}

TEST_F(CopyingFaults, ASourceThatGrowsWhileItIsReadIsNotCopied) {
    openFiles.decide = [this](const OpenCall& call) {
        if (call.operation == OpenOperation::read && call.number == 2) {
            std::ofstream(source, std::ios::app) << "and more";
        }
        return Outcome{};
    };

    EXPECT_FALSE(copy(source, {disk / "a", disk / "b"}));
    EXPECT_THAT(newLogEntries(), ElementsAre("Error: copied file size does not match original source " + source,
                                             "Error: copied file size does not match original source " + source));
    EXPECT_FALSE(stands(disk / "a"));
    EXPECT_FALSE(stands(disk / "b"));
}

TEST_F(CopyingFaults, ASourceThatNeverStopsGrowingDoesNotHoldTheCopyUp) {
    openFiles.decide = [this](const OpenCall& call) {
        if (call.operation == OpenOperation::read && call.path == source && call.number < 200) {
            std::ofstream(source, std::ios::app) << mixedContents;
        }
        return Outcome{};
    };

    EXPECT_FALSE(copy(source, {disk / "a"}, Verification::md5));
    EXPECT_EQ(openFiles.count(OpenOperation::read, source), mixedContents.size() / 65536 + 1);
    EXPECT_THAT(newLogEntries(), ElementsAre("Error: copied file size does not match original source " + source));
    EXPECT_FALSE(stands(disk / "a"));
}

TEST_F(CopyingFaults, ASourceThatShrinksWhileItIsReadIsNotCopied) {
    openFiles.decide = [this](const OpenCall& call) {
        if (call.operation == OpenOperation::read && call.number == 3) {
            std::filesystem::resize_file(source, 10);
        }
        return Outcome{};
    };

    EXPECT_FALSE(copy(source, {disk / "a"}));
    EXPECT_THAT(newLogEntries(), ElementsAre("Error: copied file size does not match original source " + source));
    EXPECT_FALSE(stands(disk / "a"));
}

TEST_F(CopyingFaults, AFullDiskLeavesNothingOfAnyCopy) {
    std::filesystem::create_directory(disk / "small");
    const pid_t child = ::fork();
    if (child == 0) {
        const bool mounted = ::unshare(CLONE_NEWNS) == 0 &&
                             ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                             ::mount("tmpfs", (disk / "small").c_str(), "tmpfs", 0, "size=256k") == 0;
        if (!mounted) {
            ::_exit(77);
        }
        const bool copied = copy(source, {disk / "a", disk / "small/b", disk / "c"});
        ::_exit(!copied && !stands(disk / "a") && !stands(disk / "small/b") && !stands(disk / "c") ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 77) {
        GTEST_SKIP() << "needs the right to mount";
    }

    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

TEST_F(CopyingFaults, AFileLargerThanTheProcessMayWriteEndsTheCopyAndLeavesNothing) {
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto signal = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{.rlim_cur = 100000, .rlim_max = before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    const bool copied = copy(source, three);
    ::setrlimit(RLIMIT_FSIZE, &before);
    (void)std::signal(SIGXFSZ, signal);

    EXPECT_FALSE(copied);
    EXPECT_THAT(newLogEntries(), ElementsAre("Error writing file " + (disk / "a") + ": 27",
                                             "Error writing file " + (disk / "a") + ": 27"));
    expectNoneOfThree();
}

TEST_F(CopyingFaults, AProcessThatIsKilledLeavesWhatItHadAndTheNextCopyCompletesIt) {
    const pid_t child = ::fork();
    if (child == 0) {
        openFiles.decide = [](const OpenCall& call) {
            if (call.operation == OpenOperation::write && call.number == 3) {
                ::kill(::getpid(), SIGKILL);
            }
            return Outcome{};
        };
        (void)copy(source, three);
        ::_exit(1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(read(disk / "a"), mixedContents.substr(0, 2 * 65536));
    EXPECT_EQ(std::filesystem::status(disk / "a").permissions(), std::filesystem::perms(0600));

    EXPECT_TRUE(copy(source, three, Verification::sha256));
    for (const std::string& path : three) {
        EXPECT_EQ(read(path), mixedContents) << path;
    }
}

class Verifying : public CopyingFaults {
protected:
    // Turns a byte round in the destination before it is read again.
    void spoil(const std::string& path) {
        openFiles.decide = [path](const OpenCall& call) {
            if (call.operation == OpenOperation::seek && call.path == path) {
                std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
                file.seekp(150000);
                file.put(static_cast<char>(~mixedContents[150000]));
            }
            return Outcome{};
        };
    }
};

TEST_F(Verifying, TellsTheDigestsOfTheSourceAndOfOneDestination) {
    EXPECT_TRUE(copy(add("abc", "abc"), {disk / "a"}, Verification::sha256));

    EXPECT_EQ(text(finalSettings, "sourceChecksum"),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(text(finalSettings, "destChecksum"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(finalSettings.count("destChecksums"), 0U);
}

TEST_F(Verifying, TellsTheDigestsOfSeveralDestinationsAsAList) {
    EXPECT_TRUE(copy(add("abc", "abc"), three, Verification::md5));

    const std::string digest = "900150983cd24fb0d6963f7d28e17f72";
    EXPECT_EQ(text(finalSettings, "sourceChecksum"), digest);
    EXPECT_THAT(texts(finalSettings, "destChecksums"), ElementsAre(digest, digest, digest));
    EXPECT_EQ(finalSettings.count("destChecksum"), 0U);
}

TEST_F(Verifying, UsesTheDigestThatWasAskedFor) {
    const std::vector<std::pair<Verification, std::size_t>> kinds{
        {Verification::md5, 32}, {Verification::sha1, 40}, {Verification::sha256, 64}, {Verification::sha512, 128}};
    for (const auto& [kind, digits] : kinds) {
        EXPECT_TRUE(copy(source, {disk / "a"}, kind));
        EXPECT_EQ(text(finalSettings, "sourceChecksum").size(), digits);
        EXPECT_EQ(text(finalSettings, "sourceChecksum"), text(finalSettings, "destChecksum"));
    }
}

TEST_F(Verifying, IsLeftOutWhenItIsNotAskedForOrUnknown) {
    for (const Verification kind : {Verification::none, static_cast<Verification>(9)}) {
        EXPECT_TRUE(copy(source, {disk / "a"}, kind));
        EXPECT_EQ(finalSettings.count("sourceChecksum"), 0U);
        EXPECT_EQ(finalSettings.count("destChecksum"), 0U);
    }
}

TEST_F(Verifying, TakesAnEmptyFile) {
    EXPECT_TRUE(copy(add("empty", ""), {disk / "a"}, Verification::md5));
    EXPECT_EQ(text(finalSettings, "destChecksum"), "d41d8cd98f00b204e9800998ecf8427e");
}

TEST_F(Verifying, NamesTheDestinationThatDiffersWhileItIsStillThere) {
    spoil(disk / "b");

    EXPECT_FALSE(copy(source, three, Verification::sha1));
    EXPECT_THAT(failedFiles, ElementsAre(disk / "b"));
    EXPECT_TRUE(failedFilesWereThere);
    EXPECT_EQ(finished, 0);
    EXPECT_NE(texts(finalSettings, "destChecksums").at(1), text(finalSettings, "sourceChecksum"));
}

TEST_F(Verifying, KeepsTheGoodCopiesAndTakesTheBadOneAway) {
    spoil(disk / "b");

    copy(source, three, Verification::sha1);

    EXPECT_EQ(read(disk / "a"), mixedContents);
    EXPECT_FALSE(stands(disk / "b"));
    EXPECT_EQ(read(disk / "c"), mixedContents);
}

TEST_F(Verifying, TakesADestinationThatCannotBeReadAgainForOneThatDiffers) {
    fail(OpenOperation::read, disk / "a", {.code = EIO}, {2});

    EXPECT_FALSE(copy(source, {disk / "a", disk / "b"}, Verification::md5));
    EXPECT_THAT(failedFiles, ElementsAre(disk / "a"));
    EXPECT_EQ(texts(finalSettings, "destChecksums").front(), "");
    EXPECT_THAT(newLogEntries(), ElementsAre("Error reading file " + (disk / "a") + " - aborting..."));
}

TEST_F(Verifying, TakesMoreDestinationsThanTheMachineHasThreads) {
    std::vector<std::string> many;
    for (int number = 0; number < 40; ++number) {
        many.push_back(disk / ("copy " + std::to_string(number)));
    }

    EXPECT_TRUE(copy(source, many, Verification::md5));
    EXPECT_THAT(texts(finalSettings, "destChecksums"), testing::Each(text(finalSettings, "sourceChecksum")));
    EXPECT_EQ(read(many.back()), mixedContents);
}

}  // namespace
