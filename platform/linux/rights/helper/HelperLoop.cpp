#include "platform/linux/rights/helper/HelperLoop.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <variant>

#include "platform/linux/rights/helper/SmallFile.h"
#include "platform/linux/rights/helper/ToolProcess.h"
#include "platform/posix/ExitWatch.h"
#include "platform/posix/Pipe.h"

namespace platform::rights {

namespace {

// Whoever does not wait for a tool looks for its effect next. Most tools end within a few milliseconds, so a moment
// here saves a much longer sleep there.
constexpr std::chrono::milliseconds graceOfTool{100};

}  // namespace

int HelperLoop::run() {
    if (!findMaster() || !openWatches() || !send(wire::Hello{wire::version, ::geteuid()})) {
        return EXIT_FAILURE;
    }
    std::array<pollfd, 3> watched{
        {{m_socket, POLLIN, 0}, {m_childSignals.get(), POLLIN, 0}, {m_masterWatch.get(), POLLIN, 0}}};
    for (;;) {
        if (::poll(watched.data(), watched.size(), -1) < 0 && errno != EINTR) {
            return EXIT_FAILURE;
        }
        if (watched[1].revents != 0) {
            reapTools();
        }
        if (watched[2].revents != 0) {
            return EXIT_SUCCESS;
        }
        if (watched[0].revents != 0 && !takeRequests()) {
            return m_betrayed ? EXIT_FAILURE : EXIT_SUCCESS;
        }
    }
}

bool HelperLoop::findMaster() {
    ucred peer{};
    socklen_t length = sizeof peer;
    constexpr int on = 1;
    if (::getsockopt(m_socket, SOL_SOCKET, SO_PEERCRED, &peer, &length) != 0 || peer.pid <= 0 ||
        ::setsockopt(m_socket, SOL_SOCKET, SO_PASSCRED, &on, sizeof on) != 0) {
        return false;
    }
    m_master = peer.pid;
    return true;
}

bool HelperLoop::openWatches() {
    sigset_t children;
    sigemptyset(&children);
    sigaddset(&children, SIGCHLD);
    ::sigprocmask(SIG_BLOCK, &children, nullptr);
    m_childSignals.reset(::signalfd(-1, &children, SFD_CLOEXEC | SFD_NONBLOCK));
    m_masterWatch = posix::openExitWatch(m_master);
    return m_childSignals && m_masterWatch;
}

// False: there is nobody left to serve.
bool HelperLoop::takeRequests() {
    const wire::Received received = wire::receiveBytes(m_socket);
    if (received.bytes.empty()) {
        return false;
    }
    if (!isFromMaster(received)) {
        m_betrayed = true;
        return false;
    }
    m_decoder.append(received.bytes);
    while (const auto message = m_decoder.next()) {
        if (!serve(*message)) {
            return false;
        }
    }
    m_betrayed = m_decoder.isDamaged();
    return !m_betrayed;
}

// While the process lives its number is nobody else's.
bool HelperLoop::isFromMaster(const wire::Received& received) const {
    pollfd watch{m_masterWatch.get(), POLLIN, 0};
    return received.process == m_master && ::poll(&watch, 1, 0) == 0;
}

bool HelperLoop::serve(const wire::Message& request) {
    if (const auto* run = std::get_if<wire::Run>(&request)) {
        return serve(*run);
    }
    if (const auto* signal = std::get_if<wire::Signal>(&request)) {
        return serve(*signal);
    }
    m_betrayed = true;
    return false;
}

bool HelperLoop::serve(const wire::Run& run) {
    if (!run.wantsOutput && copiesSmallFile(run.command)) {
        return send(wire::Reply{.error = 0});
    }
    auto pipe = run.wantsOutput ? posix::makePipe() : std::nullopt;
    if (run.wantsOutput && !pipe) {
        return send(wire::Reply{.error = errno});
    }
    const ToolStart started = startTool(run.command, pipe ? pipe->writeEnd.get() : -1);
    if (started.error != 0) {
        return send(wire::Reply{.error = started.error});
    }
    m_tools.insert(started.tool);
    if (!run.wantsOutput) {
        posix::waitForExit(started.tool, posix::openExitWatch(started.tool), graceOfTool);
    }
    return send(wire::Reply{.error = 0, .tool = started.tool}, pipe ? pipe->readEnd.get() : -1);
}

bool HelperLoop::serve(const wire::Signal& signal) {
    wire::Reply reply{.error = ESRCH, .tool = signal.tool};
    if (m_tools.contains(signal.tool)) {
        reply.error = ::kill(-signal.tool, signal.number) == 0 ? 0 : errno;
    }
    return send(reply);
}

// Never waits: the end of the process that is served must be noticed.
bool HelperLoop::send(const wire::Message& message, int descriptor) const {
    return wire::sendBytes(m_socket, *wire::encode(message), descriptor, wire::WhenFull::fail) == 0;
}

void HelperLoop::reapTools() {
    signalfd_siginfo information{};
    while (::read(m_childSignals.get(), &information, sizeof information) > 0) {
    }
    for (pid_t ended = ::waitpid(-1, nullptr, WNOHANG); ended > 0; ended = ::waitpid(-1, nullptr, WNOHANG)) {
        m_tools.erase(ended);
    }
}

}  // namespace platform::rights
