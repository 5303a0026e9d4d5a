// What the program and its administrator-rights helper say to each other over their socket.
//
// A message is a header of two 32-bit numbers (kind, length of what follows) and at most `longestMessage` bytes.
// Numbers are in the machine's own order: both ends are on one machine and made in one build.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/posix/Descriptor.h"

namespace platform::rights::wire {

constexpr std::uint32_t version = 1;
constexpr std::size_t longestMessage = std::size_t{1} << 20U;

// From the helper, once, as soon as it runs.
struct Hello {
    std::uint32_t version = 0;
    std::uint32_t effectiveUser = 0;
};

// To the helper: start a tool. The first text is the tool's path, the rest are its arguments.
struct Run {
    std::vector<std::string> command;
    bool wantsOutput = false;  // the reply brings a pipe with what the tool writes; otherwise that goes nowhere, and
                               // the reply waits a moment for a tool that ends at once
};

// To the helper: send a signal to a tool that it started, and to the tool's subtasks.
struct Signal {
    std::int32_t tool = 0;
    std::int32_t number = 0;
};

// From the helper, one for each request, in their order.
struct Reply {
    std::int32_t error = 0;  // an errno; 0: the tool runs, or the signal was sent
    std::int32_t tool = 0;   // its process number
};

using Message = std::variant<Hello, Run, Signal, Reply>;

// The bytes of a message; none when it is too long, or holds a text with a NUL.
std::optional<std::string> encode(const Message& message);

// Takes bytes as they come and gives messages out. After damage it gives nothing more.
class Decoder {
public:
    void append(std::string_view bytes);
    std::optional<Message> next();
    bool isDamaged() const { return m_damaged; }

private:
    std::string m_bytes;
    bool m_damaged = false;
};

// Sends all of it, with a descriptor beside the first byte when one is given (not negative). 0 or an errno; a reader
// that is gone gives EPIPE and no signal. While the other end reads nothing it waits, or fails with EAGAIN.
enum class WhenFull { wait, fail };
int sendBytes(int socket, std::string_view bytes, int descriptor = -1, WhenFull whenFull = WhenFull::wait);

struct Received {
    std::string bytes;             // empty: the other end is closed, or `error`
    posix::Descriptor descriptor;  // that came with them, if any
    int error = 0;                 // an errno
    std::optional<pid_t> process;  // who sent them, where the socket tells (SO_PASSCRED)
    std::optional<uid_t> user;
};

// Waits for bytes to come and takes those there are, up to 16 KiB.
Received receiveBytes(int socket);

}  // namespace platform::rights::wire
