#include "lib/KZFileManager/FileDigest.h"

#include <sys/stat.h>

#include <cerrno>

#include "lib/KZFileManager/HashPipeline.h"
#include "tests/fakes/FailingOpenFiles.h"
#include "tests/lib/FilesFixture.h"

namespace {

using OpenOperation = fakes::FailingOpenFiles::Operation;
using platform::DigestKind;

std::string mixedText(std::size_t size) {
    std::string text(size, '\0');
    unsigned value = 7;
    for (char& byte : text) {
        value = value * 1664525U + 1013904223U;
        byte = static_cast<char>(value >> 24U);
    }
    return text;
}

std::string plainDigest(const std::string& text) {
    KZFileManager::SHA256Context context;
    context.update(text);
    return KZFileManager::sha256HashWithContext(context);
}

class FileDigest : public FilesFixture {
protected:
    platform::Host withOpenFiles() {
        auto host = platform::host();
        host.openFiles = &openFiles;
        return host;
    }
    static std::size_t descriptors() {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator()));
    }

    fakes::FailingOpenFiles openFiles{*platform::linux_host::services().openFiles};
    platform::ScopedHost digestHost{withOpenFiles()};
};

TEST_F(FileDigest, IsThatOfTheContents) {
    const std::string contents = mixedText(5000001);

    EXPECT_EQ(KZFileManager::digestOfFile(add("file", contents), DigestKind::sha256).digest, plainDigest(contents));
}

TEST_F(FileDigest, OfAnEmptyFileIsThatOfNothing) {
    EXPECT_EQ(KZFileManager::digestOfFile(add("file", ""), DigestKind::md5).digest, "d41d8cd98f00b204e9800998ecf8427e");
}

TEST_F(FileDigest, IsTheSameWhenReadsAreShortOrInterrupted) {
    const std::string contents = mixedText(300000);
    const std::string path = add("file", contents);
    openFiles.decide = [](const fakes::FailingOpenFiles::Call& call) {
        fakes::FailingOpenFiles::Outcome outcome;
        outcome.atMost = 777;
        outcome.code = call.operation == OpenOperation::read && call.number % 3 == 0 ? EINTR : 0;
        return outcome;
    };

    EXPECT_EQ(KZFileManager::digestOfFile(path, DigestKind::sha256).digest, plainDigest(contents));
}

TEST_F(FileDigest, LeavesNoDescriptorOpen) {
    const std::string path = add("file", mixedText(100000));
    const std::size_t before = descriptors();

    for (int round = 0; round < 20; ++round) {
        KZFileManager::digestOfFile(path, DigestKind::md5);
        KZFileManager::digestOfFile(path, DigestKind::md5, [](std::uint64_t) { return false; });
    }

    EXPECT_EQ(descriptors(), before);
}

TEST_F(FileDigest, OfASmallFileNeedsNoSecondThread) {
    const auto threads = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                             std::filesystem::directory_iterator());
    };
    const std::string contents = mixedText(100000);
    const std::string path = add("file", contents);
    const auto before = threads();
    auto most = before;
    openFiles.decide = [&](const fakes::FailingOpenFiles::Call&) {
        most = std::max(most, threads());
        return fakes::FailingOpenFiles::Outcome{};
    };

    EXPECT_EQ(KZFileManager::digestOfFile(path, DigestKind::sha256).digest, plainDigest(contents));
    EXPECT_EQ(most, before);
}

TEST_F(FileDigest, SaysWhyThereIsNone) {
    const std::string pipe = disk / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);

    EXPECT_EQ(KZFileManager::digestOfFile(disk / "missing", DigestKind::md5).failure->code, ENOENT);
    EXPECT_EQ(KZFileManager::digestOfFile(add("folder/"), DigestKind::md5).failure->code, EISDIR);
    EXPECT_EQ(KZFileManager::digestOfFile(pipe, DigestKind::md5).failure->code, EOPNOTSUPP);
}

TEST_F(FileDigest, NamesTheFileThatCannotBeReadToItsEnd) {
    const std::string path = add("file", mixedText(1000000));
    openFiles.decide = [](const fakes::FailingOpenFiles::Call& call) {
        return fakes::FailingOpenFiles::Outcome{.code = call.operation == OpenOperation::read && call.number == 3 ? EIO
                                                                                                                  : 0};
    };

    const auto result = KZFileManager::digestOfFile(path, DigestKind::md5);

    EXPECT_EQ(result.digest, std::nullopt);
    EXPECT_EQ(result.failure->code, EIO);
    EXPECT_TRUE(result.failure->description.starts_with(path));
}

TEST_F(FileDigest, HasNeitherDigestNorFailureWhenTheCallerStopsIt) {
    std::vector<std::uint64_t> seen;

    const auto result =
        KZFileManager::digestOfFile(add("file", mixedText(3000000)), DigestKind::md5, [&](std::uint64_t bytes) {
            seen.push_back(bytes);
            return seen.size() < 2;
        });

    EXPECT_EQ(result.digest, std::nullopt);
    EXPECT_FALSE(result.failure);
    EXPECT_EQ(seen.size(), 2U);
}

TEST_F(FileDigest, TellsTheCallerHowFarItHasCome) {
    std::uint64_t last = 0;

    KZFileManager::digestOfFile(add("file", mixedText(3000000)), DigestKind::md5, [&](std::uint64_t bytes) {
        EXPECT_GT(bytes, last);
        last = bytes;
        return true;
    });

    EXPECT_EQ(last, 3000000U);
}

TEST_F(FileDigest, ComesOfBuffersInTheOrderInWhichTheyWereFilled) {
    const std::string contents = mixedText(100003);
    KZFileManager::HashPipeline pipeline(KZFileManager::SHA256Context(), {.count = 2, .size = 10});

    for (std::size_t at = 0; at < contents.size(); at += 10) {
        const std::string piece = contents.substr(at, 10);
        const auto buffer = pipeline.nextBuffer();
        std::copy(piece.begin(), piece.end(), reinterpret_cast<char*>(buffer.data()));
        pipeline.hash(piece.size());
    }

    EXPECT_EQ(pipeline.finish(), plainDigest(contents));
}

}  // namespace
