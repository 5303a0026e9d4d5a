#include "lib/KZFileManager/Hashing.h"

#include <sys/stat.h>

#include <atomic>
#include <bit>
#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "lib/KZFileManager/DigestContext.h"
#include "tests/fakes/FailingOpenFiles.h"
#include "tests/fakes/FakeBackgroundQueue.h"
#include "tests/lib/FailingAllocation.h"
#include "tests/lib/FilesFixture.h"

namespace {

using KZFileManager::ChecksumDelegate;
using KZFileManager::SharedChecksumDelegate;
using testing::ElementsAre;
using testing::IsEmpty;
using OpenOperation = fakes::FailingOpenFiles::Operation;

constexpr std::uint64_t mebibyte = 1048576;
constexpr const char* emptyMD5 = "d41d8cd98f00b204e9800998ecf8427e";
constexpr const char* abcMD5 = "900150983cd24fb0d6963f7d28e17f72";

// A stream whose reads are written down in advance: each gives so many zeros, or fails; after the last comes the end.
class ScriptedStream {
public:
    struct Step {
        std::uint64_t zeros = 0;
        bool fails = false;
    };
    explicit ScriptedStream(std::vector<Step> steps) : m_steps(std::move(steps)) {}

    std::FILE* open() { return ::fopencookie(this, "rb", {.read = read, .write = {}, .seek = {}, .close = {}}); }

private:
    static ssize_t read(void* cookie, char* buffer, std::size_t size) {
        auto& self = *static_cast<ScriptedStream*>(cookie);
        if (self.m_next == self.m_steps.size()) {
            return 0;
        }
        Step& step = self.m_steps[self.m_next];
        if (step.fails) {
            ++self.m_next;
            errno = EIO;
            return -1;
        }
        const auto count = std::min<std::uint64_t>(size, step.zeros);
        std::memset(buffer, 0, count);
        step.zeros -= count;
        self.m_next += step.zeros == 0 ? 1 : 0;
        return static_cast<ssize_t>(count);
    }

    std::vector<Step> m_steps;
    std::size_t m_next = 0;
};

class StreamFiles : public fakes::FailingOpenFiles {
public:
    using FailingOpenFiles::FailingOpenFiles;

    std::FILE* openStream(const std::string& path) override {
        stream = scripted != nullptr ? scripted->open() : FailingOpenFiles::openStream(path);
        return stream;
    }

    ScriptedStream* scripted = nullptr;
    std::FILE* stream = nullptr;  // the last one
};

class NoDigests : public platform::Digests {
public:
    std::unique_ptr<platform::Digest> start(platform::DigestKind) override { return nullptr; }
};

class Hashing : public FilesFixture {
protected:
    std::string addHole(const std::string& name, std::uint64_t size) {
        std::string path = add(name, "");
        std::filesystem::resize_file(path, size);
        return path;
    }
    // Answers every question alike, and counts them.
    SharedChecksumDelegate answering(bool answer) {
        return std::make_shared<ChecksumDelegate>(ChecksumDelegate{[this, answer](const std::string& path) {
            ++questions;
            askedAbout = path;
            return answer;
        }});
    }
    platform::Host hostWith(platform::BackgroundQueue* background) {
        auto host = platform::host();
        host.openFiles = &openFiles;
        host.background = background;
        return host;
    }
    static std::size_t descriptors() {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator()));
    }

    StreamFiles openFiles{*platform::linux_host::services().openFiles};
    fakes::FakeBackgroundQueue queue;
    platform::ScopedHost hashingHost{hostWith(&queue)};
    std::atomic<int> questions = 0;
    std::string askedAbout;
};

TEST(DigestContexts, FinishAsLowercaseHexadecimalDigits) {
    const platform::ScopedHost host(platform::linux_host::services());
    KZFileManager::MD5Context md5;
    KZFileManager::SHA1Context sha1;
    KZFileManager::SHA256Context sha256;
    KZFileManager::SHA512Context sha512;
    for (KZFileManager::DigestContext* context :
         {static_cast<KZFileManager::DigestContext*>(&md5), static_cast<KZFileManager::DigestContext*>(&sha1),
          static_cast<KZFileManager::DigestContext*>(&sha256), static_cast<KZFileManager::DigestContext*>(&sha512)}) {
        context->update("abc");
    }

    EXPECT_EQ(KZFileManager::md5HashWithContext(md5), abcMD5);
    EXPECT_EQ(KZFileManager::sha1HashWithContext(sha1), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(KZFileManager::sha256HashWithContext(sha256),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(
        KZFileManager::sha512HashWithContext(sha512),
        "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a2192992a274fc1a836ba3c23a3feebbd454d442364"
        "3ce80e2a9ac94fa54ca49f");
}

TEST(DigestContexts, GoOnAfterACopyOfThemWasFinished) {
    const platform::ScopedHost host(platform::linux_host::services());
    KZFileManager::MD5Context context;
    context.update("ab");

    const std::string early = KZFileManager::md5HashWithContext(context);
    context.update("c");

    EXPECT_EQ(early, "187ef4436122d1cc2f40dc2b92f0eba0");
    EXPECT_EQ(KZFileManager::md5HashWithContext(context), abcMD5);
}

TEST(DigestContexts, FinishAsNothingWhenTheyAreFinishedAlready) {
    const platform::ScopedHost host(platform::linux_host::services());
    KZFileManager::MD5Context context;
    context.finish();

    EXPECT_FALSE(context.isUsable());
    EXPECT_EQ(KZFileManager::md5HashWithContext(context), "");
}

TEST_F(Hashing, AnswersTheDigestOfTheContents) {
    const std::string path = add("file", "abc");

    EXPECT_EQ(KZFileManager::md5HashForFile(path), abcMD5);
    EXPECT_EQ(KZFileManager::sha1HashForFile(path), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(
        KZFileManager::sha512HashForFile(path),
        "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a2192992a274fc1a836ba3c23a3feebbd454d442364"
        "3ce80e2a9ac94fa54ca49f");
}

TEST_F(Hashing, AnswersTheDigestOfNothingForAnEmptyFileWithoutAQuestion) {
    EXPECT_EQ(KZFileManager::md5HashForFile(add("empty", ""), answering(true)), emptyMD5);
    EXPECT_EQ(questions, 0);
}

TEST_F(Hashing, TakesAFileThatDoesNotEndWithAChunk) {
    EXPECT_EQ(KZFileManager::md5HashForFile(add("file", std::string(65537, 'a'))), "b3c6fc238e908636e53aabd5ad830cf7");
}

TEST_F(Hashing, FollowsALink) {
    add("file", "abc");

    EXPECT_EQ(KZFileManager::md5HashForFile(addLink("link", disk / "file")), abcMD5);
}

TEST_F(Hashing, AsksOnceForAFileOfExactlyFiftyMebibytesAndGoesOn) {
    const std::string path = addHole("file", 50 * mebibyte);

    EXPECT_EQ(KZFileManager::md5HashForFile(path, answering(true)), "25e317773f308e446cc84c503a6d1f85");
    EXPECT_EQ(questions, 1);
    EXPECT_EQ(askedAbout, path);
}

TEST_F(Hashing, AsksAtEveryMultipleOfFiftyMebibytes) {
    KZFileManager::sha1HashForFile(addHole("file", 101 * mebibyte), answering(true));

    EXPECT_EQ(questions, 2);
}

TEST_F(Hashing, AsksNothingWhenTheFileEndsJustBeforeTheFirstMultiple) {
    KZFileManager::sha1HashForFile(addHole("file", 50 * mebibyte - 1), answering(true));

    EXPECT_EQ(questions, 0);
}

TEST_F(Hashing, AsksNothingMoreOnceAReadWasCutShort) {
    ScriptedStream stream(
        {{.zeros = 1000}, {.fails = true}, {.zeros = 50 * mebibyte - 1000}, {.zeros = 50 * mebibyte + 1}});
    openFiles.scripted = &stream;

    const auto hash = KZFileManager::md5HashForFile("/any", answering(false));

    EXPECT_EQ(hash, "25bf561e356f15310fd4a68c90cc0fcb") << "not the digest of all of it";
    EXPECT_EQ(questions, 0);
}

TEST_F(Hashing, StopsWithoutAMessageWhenTheDelegateSaysNo) {
    newLogEntries();

    const auto hash = KZFileManager::md5HashForFile(addHole("file", 51 * mebibyte), answering(false));

    EXPECT_EQ(hash, std::nullopt);
    EXPECT_EQ(questions, 1);
    EXPECT_THAT(newLogEntries(), IsEmpty());
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(Hashing, StopsSoonAfterANoOnTheHostsOwnThreads) {
    const platform::ScopedHost host(hostWith(platform::linux_host::services().background));

    EXPECT_EQ(KZFileManager::md5HashForFile(addHole("file", 4096 * mebibyte), answering(false)), std::nullopt);
}

TEST_F(Hashing, IsNotHeldUpByADelegateThatIsSlowToAnswer) {
    queue.held = true;

    EXPECT_EQ(KZFileManager::md5HashForFile(addHole("file", 50 * mebibyte), answering(false)),
              "25e317773f308e446cc84c503a6d1f85");
    queue.release();
    EXPECT_EQ(questions, 1);
}

TEST_F(Hashing, HoldsADelegateThatItsCallerLetsGoOfFromWithinAnAnswer) {
    SharedChecksumDelegate given;
    given = std::make_shared<ChecksumDelegate>(ChecksumDelegate{[&](const std::string&) {
        ++questions;
        given.reset();
        return true;
    }});

    EXPECT_TRUE(KZFileManager::md5HashForFile(addHole("file", 101 * mebibyte), given));
    EXPECT_EQ(questions, 2);
}

TEST_F(Hashing, NeverAsksADelegateThatDoesNotAnswer) {
    const auto silent = std::make_shared<ChecksumDelegate>();

    EXPECT_EQ(KZFileManager::md5HashForFile(addHole("file", 50 * mebibyte), silent),
              "25e317773f308e446cc84c503a6d1f85");
    EXPECT_EQ(queue.pieces, 0);
}

TEST_F(Hashing, TakesAnAnswerThatThrowsForAYes) {
    const auto throwing = std::make_shared<ChecksumDelegate>(
        ChecksumDelegate{[](const std::string&) -> bool { throw std::runtime_error("no answer"); }});

    EXPECT_EQ(KZFileManager::md5HashForFile(addHole("file", 50 * mebibyte), throwing),
              "25e317773f308e446cc84c503a6d1f85");
    EXPECT_THAT(newLogEntries(), ElementsAre("Exception in checksumShouldContinue:. std::exception - no answer."));
}

TEST_F(Hashing, SaysOnTheConsoleThatAFileCannotBeOpened) {
    EXPECT_EQ(KZFileManager::md5HashForFile(disk / "missing"), std::nullopt);
    EXPECT_THAT(console.lines(), ElementsAre("Error: Unable to open destination file " + (disk / "missing") +
                                             ". Aborting hash verification..."));
    EXPECT_THAT(openFiles.closedDescriptors(), IsEmpty());
}

TEST_F(Hashing, DoesNotWaitForTheOtherEndOfAPipe) {
    const std::string path = disk / "pipe";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);

    EXPECT_EQ(KZFileManager::sha1HashForFile(path), std::nullopt);
    EXPECT_EQ(console.lines().size(), 1U);
}

TEST_F(Hashing, SaysInTheLogThatAFolderCannotBeRead) {
    const std::string path = add("folder/");

    EXPECT_EQ(KZFileManager::sha512HashForFile(path), std::nullopt);
    EXPECT_THAT(newLogEntries(), ElementsAre("Error reading file " + path + " - aborting..."));
}

TEST_F(Hashing, SaysInTheLogThatReadingFailedHalfWay) {
    ScriptedStream stream({{.zeros = 3 * 65536}, {.fails = true}});
    openFiles.scripted = &stream;

    EXPECT_EQ(KZFileManager::md5HashForFile("/any"), std::nullopt);
    EXPECT_THAT(newLogEntries(), ElementsAre("Error reading file /any - aborting..."));
}

TEST_F(Hashing, SaysInTheLogThatThereIsNoMemoryForTheChunk) {
    const std::string path = add("file", "abc");
    {
        const FailingAllocation noMemory;
        EXPECT_EQ(KZFileManager::md5HashForFile(path), std::nullopt);
    }

    EXPECT_THAT(newLogEntries(), ElementsAre("Error reading file " + path + " - out of memory"));
}

TEST_F(Hashing, AnswersNothingWhenTheHostHasNoSuchDigest) {
    NoDigests none;
    auto without = platform::host();
    without.digests = &none;
    const platform::ScopedHost host(without);

    EXPECT_EQ(KZFileManager::md5HashForFile(add("file", "abc")), std::nullopt);
    EXPECT_EQ(console.lines().size(), 1U);
}

TEST_F(Hashing, LeavesTheStreamOpenAndClosesTheDescriptorNamedByHalfOfItsAddress) {
    const std::string path = add("file", "abc");
    const std::size_t before = descriptors();

    KZFileManager::md5HashForFile(path);

    const auto lowHalf = static_cast<std::uint32_t>(std::bit_cast<std::uintptr_t>(openFiles.stream));
    EXPECT_THAT(openFiles.closedDescriptors(), ElementsAre(static_cast<int>(lowHalf)));
    EXPECT_EQ(descriptors(), before + 1);
    EXPECT_EQ(std::fclose(openFiles.stream), 0);
}

TEST_F(Hashing, ReleasesTheFileInTheSameWayHoweverItEnds) {
    KZFileManager::md5HashForFile(add("folder/"));
    KZFileManager::md5HashForFile(addHole("file", 50 * mebibyte), answering(false));
    {
        const FailingAllocation noMemory;
        KZFileManager::md5HashForFile(add("other", ""));
    }

    EXPECT_EQ(openFiles.closedDescriptors().size(), 3U);
}

}  // namespace
