// The real helper at the other end of a bare socket, for tests of what a session would never do.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

#include "platform/linux/rights/HelperImage.h"
#include "platform/linux/rights/wire/Wire.h"
#include "platform/posix/Descriptor.h"

namespace tests {

namespace wire = platform::rights::wire;

class RawHelper {
public:
    // `prepare` runs in the helper's process before it becomes the helper.
    explicit RawHelper(const std::function<void()>& prepare = [] {}) {
        std::array<int, 2> ends{-1, -1};
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
            return;
        }
        constexpr int on = 1;
        ::setsockopt(ends[0], SOL_SOCKET, SO_PASSCRED, &on, sizeof on);
        socket.reset(ends[0]);
        process = ::fork();
        if (process == 0) {
            ::dup2(ends[1], STDIN_FILENO);
            prepare();
            ::execl(m_image.path().c_str(), "wickfield-rights", nullptr);
            ::_exit(126);
        }
        ::close(ends[1]);
    }
    ~RawHelper() {
        socket.reset();
        if (process > 0) {
            ::kill(process, SIGKILL);
            ::waitpid(process, nullptr, 0);
        }
    }
    RawHelper(const RawHelper&) = delete;
    RawHelper& operator=(const RawHelper&) = delete;

    bool isThere() { return next<wire::Hello>().has_value(); }

    // What it says next; none when it is gone.
    template <class Message>
    std::optional<Message> next() {
        for (;;) {
            if (const auto message = m_decoder.next()) {
                const auto* wanted = std::get_if<Message>(&*message);
                return wanted != nullptr ? std::optional(*wanted) : std::nullopt;
            }
            auto received = wire::receiveBytes(socket.get());
            if (received.bytes.empty()) {
                return std::nullopt;
            }
            if (received.descriptor) {
                output = std::move(received.descriptor);
            }
            m_decoder.append(received.bytes);
        }
    }

    void say(const wire::Message& message) const { wire::sendBytes(socket.get(), *wire::encode(message)); }

    // An errno; -1 when the helper is gone.
    int run(std::vector<std::string> command, bool wantsOutput = true) {
        say(wire::Run{.command = std::move(command), .wantsOutput = wantsOutput});
        const auto reply = next<wire::Reply>();
        tool = reply ? reply->tool : -1;
        return reply ? reply->error : -1;
    }

    // What the tool wrote.
    std::string textOf(std::vector<std::string> command) {
        if (run(std::move(command)) != 0) {
            return "not started";
        }
        std::string text;
        std::array<char, 4096> bytes{};
        for (ssize_t got = 0; (got = ::read(output.get(), bytes.data(), bytes.size())) > 0;) {
            text.append(bytes.data(), static_cast<std::size_t>(got));
        }
        return text;
    }

    // How it ended, for once; none while it still runs after a second.
    std::optional<int> exitCode() {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds{1};
        int status = 0;
        while (::waitpid(process, &status, WNOHANG) != process) {
            if (std::chrono::steady_clock::now() > limit) {
                return std::nullopt;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds{2});
        }
        process = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    platform::posix::Descriptor socket;
    platform::posix::Descriptor output;  // of the tool that was started last
    pid_t process = -1;
    pid_t tool = -1;

private:
    platform::rights::HelperImage m_image;
    wire::Decoder m_decoder;
};

class WithHelper : public testing::Test {
protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "only the superuser can start the helper without asking";
        }
    }
};

}  // namespace tests
