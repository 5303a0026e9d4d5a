#include "platform/linux/rights/wire/Wire.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <string>
#include <variant>

namespace {

namespace wire = platform::rights::wire;
using platform::posix::Descriptor;

std::string headerOf(std::uint32_t kind, std::uint32_t length) {
    std::string bytes(8, '\0');
    bytes.replace(0, 4, reinterpret_cast<const char*>(&kind), 4);    // NOLINT: the bytes of a number
    bytes.replace(4, 4, reinterpret_cast<const char*>(&length), 4);  // NOLINT: the bytes of a number
    return bytes;
}

template <class Message>
Message roundTrip(const Message& message) {
    wire::Decoder decoder;
    decoder.append(wire::encode(message).value());
    return std::get<Message>(decoder.next().value());
}

bool isNonsense(const std::string& bytes) {
    wire::Decoder decoder;
    decoder.append(bytes);
    return !decoder.next() && decoder.isDamaged();
}

TEST(Messages, ComeOutAsTheyWentIn) {
    const auto run = roundTrip(wire::Run{.command = {"/bin/rm", "", "two\nlines", "\xff"}, .wantsOutput = true});
    EXPECT_EQ(run.command, (std::vector<std::string>{"/bin/rm", "", "two\nlines", "\xff"}));
    EXPECT_TRUE(run.wantsOutput);
    EXPECT_EQ(roundTrip(wire::Reply{.error = -5, .tool = 77}).error, -5);
    EXPECT_EQ(roundTrip(wire::Reply{.error = -5, .tool = 77}).tool, 77);
    EXPECT_EQ(roundTrip(wire::Signal{.tool = 7, .number = 9}).number, 9);
    EXPECT_EQ(roundTrip(wire::Hello{.version = 3, .effectiveUser = 4}).effectiveUser, 4U);
    EXPECT_TRUE(roundTrip(wire::Run{}).command.empty());
}

TEST(Messages, WaitForTheirLastByte) {
    const auto bytes = wire::encode(wire::Run{.command = {"/bin/true"}}).value();
    wire::Decoder decoder;
    for (const char byte : bytes.substr(0, bytes.size() - 1)) {
        decoder.append({&byte, 1});
        ASSERT_FALSE(decoder.next());
    }
    EXPECT_FALSE(decoder.isDamaged());
    decoder.append({&bytes.back(), 1});
    EXPECT_TRUE(decoder.next());
    EXPECT_FALSE(decoder.next());
}

TEST(Messages, AreToldFromNonsense) {
    EXPECT_TRUE(isNonsense(headerOf(0, 0)));
    EXPECT_TRUE(isNonsense(headerOf(5, 0)));
    EXPECT_TRUE(isNonsense(headerOf(1, 7) + std::string(7, 'x')));          // a hello that is too short
    EXPECT_TRUE(isNonsense(headerOf(4, 9) + std::string(9, 'x')));          // a reply that is too long
    EXPECT_TRUE(isNonsense(headerOf(2, 3) + "abc"));                        // a run without its flag
    EXPECT_TRUE(isNonsense(headerOf(2, 5) + std::string("\0\0\0\0x", 5)));  // an argument without an end
    EXPECT_TRUE(isNonsense(headerOf(2, 4) + std::string("\2\0\0\0", 4)));   // a flag that is neither
    EXPECT_TRUE(isNonsense(headerOf(2, wire::longestMessage + 1)));         // too long, told at once
    EXPECT_TRUE(isNonsense(headerOf(3, 0xffffffffU)));
}

TEST(Messages, AreNotReadAfterNonsense) {
    wire::Decoder decoder;
    decoder.append(headerOf(9, 0) + wire::encode(wire::Run{}).value());
    EXPECT_FALSE(decoder.next());
    decoder.append(wire::encode(wire::Run{}).value());
    EXPECT_FALSE(decoder.next());
}

TEST(Messages, AreNotMadeOfWhatDoesNotFit) {
    EXPECT_FALSE(wire::encode(wire::Run{.command = {std::string("a\0b", 3)}}));
    EXPECT_FALSE(wire::encode(wire::Run{.command = {std::string(wire::longestMessage, 'x')}}));
    EXPECT_TRUE(wire::encode(wire::Run{.command = {std::string(wire::longestMessage - 5, 'x')}}));
    EXPECT_FALSE(wire::encode(wire::Run{.command = {std::string(wire::longestMessage - 4, 'x')}}));
}

class Wire : public testing::Test {
protected:
    void SetUp() override {
        std::array<int, 2> ends{};
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
        one.reset(ends[0]);
        other.reset(ends[1]);
        constexpr int on = 1;
        ::setsockopt(other.get(), SOL_SOCKET, SO_PASSCRED, &on, sizeof on);
    }
    Descriptor one;
    Descriptor other;
};

TEST_F(Wire, SaysWhoSent) {
    ASSERT_EQ(wire::sendBytes(one.get(), "x"), 0);
    const auto received = wire::receiveBytes(other.get());
    EXPECT_EQ(received.bytes, "x");
    EXPECT_EQ(received.process, ::getpid());
    EXPECT_EQ(received.user, ::geteuid());
}

TEST_F(Wire, CarriesADescriptorThatToolsDoNotInherit) {
    const Descriptor null(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(wire::sendBytes(one.get(), "x", null.get()), 0);
    const auto received = wire::receiveBytes(other.get());
    ASSERT_TRUE(received.descriptor);
    EXPECT_EQ(::fcntl(received.descriptor.get(), F_GETFD), FD_CLOEXEC);
    struct stat sent {};
    struct stat got {};
    ASSERT_EQ(::fstat(null.get(), &sent) + ::fstat(received.descriptor.get(), &got), 0);
    EXPECT_EQ(sent.st_ino, got.st_ino);
}

TEST_F(Wire, SaysThatTheOtherEndIsGone) {
    other.reset();
    EXPECT_EQ(wire::sendBytes(one.get(), "x"), EPIPE);
    const auto received = wire::receiveBytes(one.get());
    EXPECT_TRUE(received.bytes.empty());
    EXPECT_EQ(received.error, 0);
}

TEST_F(Wire, DoesNotWaitForAReaderWhenToldSo) {
    const std::string much(std::size_t{1} << 24U, 'x');
    EXPECT_EQ(wire::sendBytes(one.get(), much, -1, wire::WhenFull::fail), EAGAIN);
}

}  // namespace
