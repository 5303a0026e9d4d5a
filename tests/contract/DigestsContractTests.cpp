// What the digests of a host promise, with the examples that their standards publish.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "HostUnderTest.h"
#include "platform/ports/Digests.h"
#include "tests/fakes/JoiningThread.h"

namespace {

using platform::DigestKind;

platform::Digests& digests() { return *host_under_test::services().digests; }

std::span<const std::byte> bytesOf(std::string_view text) { return std::as_bytes(std::span(text)); }

std::string hexadecimal(const std::optional<std::vector<std::byte>>& bytes) {
    if (!bytes) {
        return "none";
    }
    std::string text;
    for (const std::byte byte : *bytes) {
        std::array<char, 3> digits{};
        std::snprintf(digits.data(), digits.size(), "%02x", std::to_integer<unsigned>(byte));
        text += digits.data();
    }
    return text;
}

std::string digestOf(DigestKind kind, std::string_view text) {
    const auto digest = digests().start(kind);
    digest->update(bytesOf(text));
    return hexadecimal(digest->finish());
}

struct Example {
    DigestKind kind;
    std::string text;
    std::string digest;
};

class DigestsContract : public testing::TestWithParam<Example> {};

TEST_P(DigestsContract, AnswersAsItsStandardSays) {
    EXPECT_EQ(digestOf(GetParam().kind, GetParam().text), GetParam().digest);
}

TEST_P(DigestsContract, AnswersTheSameForTheSameBytesInManyPieces) {
    const auto digest = digests().start(GetParam().kind);

    for (const char character : GetParam().text) {
        digest->update(bytesOf({&character, 1}));
        digest->update({});
    }

    EXPECT_EQ(hexadecimal(digest->finish()), GetParam().digest);
}

INSTANTIATE_TEST_SUITE_P(
    PublishedExamples, DigestsContract,
    testing::Values(
        Example{DigestKind::md5, "", "d41d8cd98f00b204e9800998ecf8427e"},
        Example{DigestKind::md5, "message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
        Example{DigestKind::sha1, "", "da39a3ee5e6b4b0d3255bfef95601890afd80709"},
        Example{DigestKind::sha1, "abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
        Example{DigestKind::sha1, std::string(1000000, 'a'), "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
        Example{DigestKind::sha256, "", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        Example{DigestKind::sha256, "abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        Example{DigestKind::sha512, "",
                "cf83e1357eefb8bdf1542850d66d8007d620e4050b5715dc83f4a921d36ce9ce47d0d13c5d85f2b0ff8318d2877eec2f63b9"
                "31bd47417a81a538327af927da3e"},
        Example{DigestKind::sha512, "abc",
                "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a2192992a274fc1a836ba3c23a3feebbd454d"
                "4423643ce80e2a9ac94fa54ca49f"}));

TEST(DigestUnderWay, GoesOnInACopyWithoutChangingTheOriginal) {
    const auto original = digests().start(DigestKind::sha1);
    original->update(bytesOf("ab"));

    const auto copy = original->copy();
    copy->update(bytesOf("something else"));
    original->update(bytesOf("c"));

    EXPECT_EQ(hexadecimal(original->finish()), "a9993e364706816aba3e25717850c26c9cd0d89d");
}

TEST(DigestUnderWay, StandsWhereTheOriginalStoodWhenItIsCopied) {
    const auto original = digests().start(DigestKind::sha1);
    original->update(bytesOf("ab"));

    const auto copy = original->copy();
    copy->update(bytesOf("c"));

    EXPECT_EQ(hexadecimal(copy->finish()), "a9993e364706816aba3e25717850c26c9cd0d89d");
}

TEST(FinishedDigest, HasNoSecondAnswerAndTakesNothingMore) {
    const auto digest = digests().start(DigestKind::md5);
    ASSERT_TRUE(digest->finish());

    EXPECT_FALSE(digest->update(bytesOf("more")));
    EXPECT_FALSE(digest->finish());
    EXPECT_EQ(digest->copy(), nullptr);
}

TEST(Digests, AreMadeFromSeveralThreadsAtOnce) {
    std::array<std::string, 8> answers;
    {
        std::vector<fakes::JoiningThread> threads;
        for (std::string& answer : answers) {
            threads.emplace_back([&answer] { answer = digestOf(DigestKind::md5, "message digest"); });
        }
    }

    for (const std::string& answer : answers) {
        EXPECT_EQ(answer, "f96b697d7cb7938d525a2f31aaf161d0");
    }
}

}  // namespace
