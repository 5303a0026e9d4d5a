#include "platform/linux/rights/RightsSession.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>
#include <variant>

namespace platform::rights {

namespace {

void drainOutput(int output) {
    std::array<char, 4096> dropped{};
    ssize_t got = 0;
    do {
        got = ::read(output, dropped.data(), dropped.size());
    } while (got > 0 || (got < 0 && errno == EINTR));
}

}  // namespace

int RightsSession::run(const std::string& tool, const std::vector<std::string>& arguments, bool drain) {
    const Started started = start(tool, arguments, drain);
    if (started.error == 0 && started.output) {
        drainOutput(started.output.get());
    }
    return started.error;
}

RightsSession::Started RightsSession::start(const std::string& tool, const std::vector<std::string>& arguments,
                                            bool wantsOutput) {
    wire::Run run{.command = {tool}, .wantsOutput = wantsOutput};
    run.command.insert(run.command.end(), arguments.begin(), arguments.end());
    return exchange(run);
}

int RightsSession::sendSignal(pid_t tool, int number) {
    return exchange(wire::Signal{.tool = tool, .number = number}).error;
}

bool RightsSession::isAlive() {
    const std::lock_guard lock(m_mutex);
    if (!m_socket) {
        return false;
    }
    pollfd state{m_socket.get(), POLLRDHUP, 0};
    return ::poll(&state, 1, 0) == 0;
}

RightsSession::Started RightsSession::exchange(const wire::Message& request) {
    const auto bytes = wire::encode(request);
    if (!bytes) {
        return {.error = E2BIG};
    }
    const std::lock_guard lock(m_mutex);
    if (!m_socket || wire::sendBytes(m_socket.get(), *bytes) != 0) {
        m_socket.reset();
        return {.error = EPIPE};
    }
    Started started;
    for (;;) {
        if (const auto message = m_decoder.next()) {
            if (const auto* reply = std::get_if<wire::Reply>(&*message)) {
                started.error = reply->error;
                started.tool = reply->tool;
                return started;
            }
        }
        wire::Received received = wire::receiveBytes(m_socket.get());
        if (received.bytes.empty() || m_decoder.isDamaged()) {
            m_socket.reset();
            return {.error = EPIPE};
        }
        if (received.descriptor) {
            started.output = std::move(received.descriptor);
        }
        m_decoder.append(received.bytes);
    }
}

}  // namespace platform::rights
