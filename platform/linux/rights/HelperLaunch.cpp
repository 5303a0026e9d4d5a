#include "platform/linux/rights/HelperLaunch.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

#include "platform/posix/ArgumentPointers.h"
#include "platform/posix/ExitWatch.h"
#include "platform/posix/Pipe.h"
#include "platform/posix/Reaper.h"

namespace platform::rights {

namespace {

struct SocketPair {
    posix::Descriptor ours;
    posix::Descriptor helpers;
};

std::optional<SocketPair> makeSocketPair() {
    std::array<int, 2> ends{-1, -1};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        return std::nullopt;
    }
    SocketPair pair{posix::aboveStandardStreams(posix::Descriptor(ends[0])),
                    posix::aboveStandardStreams(posix::Descriptor(ends[1]))};
    constexpr int on = 1;
    if (!pair.ours || !pair.helpers || ::setsockopt(pair.ours.get(), SOL_SOCKET, SO_PASSCRED, &on, sizeof on) != 0) {
        return std::nullopt;
    }
    return pair;
}

struct ChildDescriptors {
    int socket;
    int messages;
    int inherited;  // negative: none
};

// A session of its own keeps the terminal out of play; signals are as a program expects them at its start.
int spawn(const std::vector<std::string>& command, const std::optional<std::vector<std::string>>& environment,
          ChildDescriptors descriptors, pid_t& child) {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, descriptors.socket, STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, descriptors.messages, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, descriptors.messages, STDERR_FILENO);
    int firstClosed = STDERR_FILENO + 1;
    if (descriptors.inherited >= 0) {
        ::posix_spawn_file_actions_adddup2(&actions, descriptors.inherited, firstClosed++);
    }
    ::posix_spawn_file_actions_addclosefrom_np(&actions, firstClosed);
    ::posix_spawnattr_init(&attributes);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    sigset_t signals;
    sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&attributes, &signals);
    sigfillset(&signals);
    ::posix_spawnattr_setsigdefault(&attributes, &signals);
    const auto arguments = posix::pointersTo(command);
    const auto variables = environment ? posix::pointersTo(*environment) : std::vector<char*>{};
    const int error = ::posix_spawn(&child, command.front().c_str(), &actions, &attributes, arguments.data(),
                                    environment ? variables.data() : environ);
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    return error;
}

}  // namespace

std::variant<HelperLaunch, int> HelperLaunch::start(const std::vector<std::string>& command,
                                                    const std::optional<std::vector<std::string>>& environment,
                                                    int inherited) {
    auto sockets = makeSocketPair();
    auto messages = sockets ? posix::makePipe() : std::nullopt;
    if (!messages) {
        return errno;
    }
    ::fcntl(messages->readEnd.get(), F_SETFL, O_NONBLOCK);
    HelperLaunch launch;
    if (const int error =
            spawn(command, environment,
                  {.socket = sockets->helpers.get(), .messages = messages->writeEnd.get(), .inherited = inherited},
                  launch.m_child)) {
        launch.m_child = -1;
        return error;
    }
    launch.m_socket = std::move(sockets->ours);
    launch.m_messages = std::move(messages->readEnd);
    launch.m_exitWatch = posix::openExitWatch(launch.m_child);
    return launch;
}

HelperLaunch::HelperLaunch(HelperLaunch&& other) noexcept
    : m_socket(std::move(other.m_socket)),
      m_messages(std::move(other.m_messages)),
      m_exitWatch(std::move(other.m_exitWatch)),
      m_child(std::exchange(other.m_child, -1)),
      m_decoder(std::move(other.m_decoder)),
      m_progress(other.m_progress) {}

HelperLaunch::~HelperLaunch() {
    m_socket.reset();
    if (m_child > 0) {
        posix::Reaper::shared().adopt(m_child, std::move(m_exitWatch));
    }
}

HelperLaunch::Progress HelperLaunch::progress() {
    if (m_progress != Progress::waiting) {
        return m_progress;
    }
    pollfd state{m_socket.get(), POLLIN, 0};
    if (::poll(&state, 1, 0) <= 0) {
        return m_progress;
    }
    const wire::Received received = wire::receiveBytes(m_socket.get());
    m_decoder.append(received.bytes);
    const auto message = m_decoder.next();
    const auto* hello = message ? std::get_if<wire::Hello>(&*message) : nullptr;
    if (hello != nullptr) {
        const bool isRoot = hello->effectiveUser == 0 && received.user == uid_t{0};
        m_progress = isRoot && hello->version == wire::version ? Progress::running : Progress::ended;
    } else if (received.bytes.empty() || m_decoder.isDamaged()) {
        m_progress = Progress::ended;
    }
    return m_progress;
}

std::optional<int> HelperLaunch::exitCode() {
    if (m_child <= 0) {
        return std::nullopt;
    }
    const posix::ExitState state = posix::exitState(m_child, posix::Blocking::no);
    if (!state.ended) {
        return std::nullopt;
    }
    posix::reap(m_child);
    m_child = -1;
    constexpr int killed = 128;
    return state.bySignal ? killed + state.status : state.status;
}

std::unique_ptr<RightsSession> HelperLaunch::takeSession() {
    return std::make_unique<RightsSession>(std::move(m_socket));
}

}  // namespace platform::rights
