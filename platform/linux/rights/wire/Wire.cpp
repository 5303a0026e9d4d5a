#include "platform/linux/rights/wire/Wire.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace platform::rights::wire {

namespace {

constexpr std::size_t headerLength = 2 * sizeof(std::uint32_t);
constexpr std::size_t largestRead = std::size_t{16} << 10U;

enum class Kind : std::uint32_t { hello = 1, run = 2, signal = 3, reply = 4 };

template <class Number>
void put(std::string& bytes, Number number) {
    std::array<char, sizeof number> raw{};
    std::memcpy(raw.data(), &number, sizeof number);
    bytes.append(raw.data(), raw.size());
}

template <class Number>
Number numberAt(std::string_view bytes, std::size_t position) {
    Number number{};
    std::memcpy(&number, bytes.data() + position, sizeof number);
    return number;
}

struct Body {
    Kind kind;
    std::string bytes;
};

std::optional<Body> bodyOf(const Hello& hello) {
    Body body{Kind::hello, {}};
    put(body.bytes, hello.version);
    put(body.bytes, hello.effectiveUser);
    return body;
}

std::optional<Body> bodyOf(const Run& run) {
    Body body{Kind::run, {}};
    put(body.bytes, std::uint32_t{run.wantsOutput});
    for (const auto& text : run.command) {
        if (text.find('\0') != std::string::npos || text.size() >= longestMessage - body.bytes.size()) {
            return std::nullopt;
        }
        body.bytes.append(text.c_str(), text.size() + 1);
    }
    return body;
}

std::optional<Body> bodyOf(const Signal& signal) {
    Body body{Kind::signal, {}};
    put(body.bytes, signal.tool);
    put(body.bytes, signal.number);
    return body;
}

std::optional<Body> bodyOf(const Reply& reply) {
    Body body{Kind::reply, {}};
    put(body.bytes, reply.error);
    put(body.bytes, reply.tool);
    return body;
}

template <class Value, class First, class Second>
std::optional<Message> pairIn(std::string_view body) {
    if (body.size() != sizeof(First) + sizeof(Second)) {
        return std::nullopt;
    }
    return Value{numberAt<First>(body, 0), numberAt<Second>(body, sizeof(First))};
}

std::optional<Message> runIn(std::string_view body) {
    if (body.size() < sizeof(std::uint32_t) || (body.size() > sizeof(std::uint32_t) && body.back() != '\0')) {
        return std::nullopt;
    }
    const auto wantsOutput = numberAt<std::uint32_t>(body, 0);
    if (wantsOutput > 1) {
        return std::nullopt;
    }
    Run run{.command = {}, .wantsOutput = wantsOutput == 1};
    body.remove_prefix(sizeof(std::uint32_t));
    while (!body.empty()) {
        const std::size_t end = body.find('\0');
        run.command.emplace_back(body.substr(0, end));
        body.remove_prefix(end + 1);
    }
    return run;
}

std::optional<Message> messageIn(std::uint32_t kind, std::string_view body) {
    switch (Kind{kind}) {
        case Kind::hello:
            return pairIn<Hello, std::uint32_t, std::uint32_t>(body);
        case Kind::run:
            return runIn(body);
        case Kind::signal:
            return pairIn<Signal, std::int32_t, std::int32_t>(body);
        case Kind::reply:
            return pairIn<Reply, std::int32_t, std::int32_t>(body);
    }
    return std::nullopt;
}

// Room for one descriptor and the sender's credentials.
union Control {
    cmsghdr alignment;
    std::array<char, CMSG_SPACE(sizeof(int)) + CMSG_SPACE(sizeof(ucred))> bytes;
};

void takeDescriptors(const cmsghdr& header, Received& received) {
    const std::size_t count = (header.cmsg_len - CMSG_LEN(0)) / sizeof(int);
    for (std::size_t i = 0; i < count; ++i) {
        int descriptor = -1;
        std::memcpy(&descriptor, CMSG_DATA(&header) + i * sizeof descriptor, sizeof descriptor);
        received.descriptor.reset(descriptor);
    }
}

void takeControl(msghdr& message, Received& received) {
    for (cmsghdr* header = CMSG_FIRSTHDR(&message); header != nullptr; header = CMSG_NXTHDR(&message, header)) {
        if (header->cmsg_level != SOL_SOCKET) {
            continue;
        }
        if (header->cmsg_type == SCM_RIGHTS) {
            takeDescriptors(*header, received);
        } else if (header->cmsg_type == SCM_CREDENTIALS) {
            ucred sender{};
            std::memcpy(&sender, CMSG_DATA(header), sizeof sender);
            received.process = sender.pid;
            received.user = sender.uid;
        }
    }
}

}  // namespace

std::optional<std::string> encode(const Message& message) {
    const auto body = std::visit([](const auto& value) { return bodyOf(value); }, message);
    if (!body || body->bytes.size() > longestMessage) {
        return std::nullopt;
    }
    std::string bytes;
    bytes.reserve(headerLength + body->bytes.size());
    put(bytes, static_cast<std::uint32_t>(body->kind));
    put(bytes, static_cast<std::uint32_t>(body->bytes.size()));
    return bytes + body->bytes;
}

void Decoder::append(std::string_view bytes) {
    if (!m_damaged) {
        m_bytes += bytes;
    }
}

std::optional<Message> Decoder::next() {
    if (m_damaged || m_bytes.size() < headerLength) {
        return std::nullopt;
    }
    const auto kind = numberAt<std::uint32_t>(m_bytes, 0);
    const std::size_t length = numberAt<std::uint32_t>(m_bytes, sizeof(std::uint32_t));
    std::optional<Message> message;
    if (length <= longestMessage) {
        if (m_bytes.size() - headerLength < length) {
            return std::nullopt;
        }
        message = messageIn(kind, std::string_view(m_bytes).substr(headerLength, length));
    }
    if (!message) {
        m_damaged = true;
        m_bytes.clear();
        return std::nullopt;
    }
    m_bytes.erase(0, headerLength + length);
    return message;
}

int sendBytes(int socket, std::string_view bytes, int descriptor, WhenFull whenFull) {
    const int flags = MSG_NOSIGNAL | (whenFull == WhenFull::fail ? MSG_DONTWAIT : 0);
    while (!bytes.empty()) {
        iovec data{const_cast<char*>(bytes.data()), bytes.size()};
        msghdr message{};
        message.msg_iov = &data;
        message.msg_iovlen = 1;
        Control control{};
        if (descriptor >= 0) {
            message.msg_control = control.bytes.data();
            message.msg_controllen = CMSG_SPACE(sizeof(int));
            cmsghdr* const header = CMSG_FIRSTHDR(&message);
            header->cmsg_level = SOL_SOCKET;
            header->cmsg_type = SCM_RIGHTS;
            header->cmsg_len = CMSG_LEN(sizeof(int));
            std::memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
        }
        const ssize_t sent = ::sendmsg(socket, &message, flags);
        if (sent > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(sent));
            descriptor = -1;
        } else if (sent < 0 && errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

Received receiveBytes(int socket) {
    Received received;
    std::array<char, largestRead> bytes;  // NOLINT(cppcoreguidelines-pro-type-member-init): filled below
    iovec data{bytes.data(), bytes.size()};
    Control control{};
    msghdr message{};
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = control.bytes.data();
    message.msg_controllen = control.bytes.size();
    ssize_t got = -1;
    do {
        got = ::recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
    } while (got < 0 && errno == EINTR);
    if (got < 0) {
        received.error = errno;
        return received;
    }
    takeControl(message, received);
    received.bytes.assign(bytes.data(), static_cast<std::size_t>(got));
    return received;
}

}  // namespace platform::rights::wire
