#include "platform/posix/Spawn.h"
#include "platform/posix/ArgumentPointers.h"
#include "platform/posix/FileErrors.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#if defined(__APPLE__)
#include <crt_externs.h>
#endif

namespace platform::posix {

namespace {

class FileActions {
public:
    FileActions() { ::posix_spawn_file_actions_init(&m_actions); }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&m_actions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    void use(int descriptor, int asStream) {
        if (descriptor >= 0) {
            ::posix_spawn_file_actions_adddup2(&m_actions, descriptor, asStream);
            return;
        }
#if defined(__APPLE__)
        // POSIX_SPAWN_CLOEXEC_DEFAULT closes the standard streams, too, unless they are named.
        if (::fcntl(asStream, F_GETFD) != -1) {
            ::posix_spawn_file_actions_addinherit_np(&m_actions, asStream);
        }
#endif
    }
    // Closes what libraries or the program's parent left inheritable.
    void closeTheRest() {
#if defined(__GLIBC__)
        ::posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1);
#endif
    }
    const posix_spawn_file_actions_t* get() const { return &m_actions; }

private:
    posix_spawn_file_actions_t m_actions{};
};

class Attributes {
public:
    Attributes() {
        ::posix_spawnattr_init(&m_attributes);
        short flags = POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK;
#if defined(__APPLE__)
        flags |= POSIX_SPAWN_CLOEXEC_DEFAULT;
#endif
        ::posix_spawnattr_setflags(&m_attributes, flags);
        ::posix_spawnattr_setpgroup(&m_attributes, 0);
        sigset_t signals;
        sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&m_attributes, &signals);
        sigfillset(&signals);
        ::posix_spawnattr_setsigdefault(&m_attributes, &signals);
    }
    ~Attributes() { ::posix_spawnattr_destroy(&m_attributes); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    const posix_spawnattr_t* get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes{};
};

char** inheritedEnvironment() {
#if defined(__APPLE__)
    return *_NSGetEnviron();
#else
    return environ;
#endif
}

bool holdsNul(const std::string& text) { return text.find('\0') != std::string::npos; }

// The system would silently cut such a text short.
bool cannotBePassed(const ProcessOptions& options) {
    if (holdsNul(options.path) || std::any_of(options.arguments.begin(), options.arguments.end(), holdsNul)) {
        return true;
    }
    return options.environment &&
           std::any_of(options.environment->begin(), options.environment->end(), [](const auto& variable) {
               return holdsNul(variable.first) || holdsNul(variable.second) || variable.first.empty() ||
                      variable.first.find('=') != std::string::npos;
           });
}

Error describe(int code, const std::string& path) {
    switch (code) {
        case ENOENT:
            if (::access(path.c_str(), F_OK) == 0) {
                return {code, "launch path not accessible: the interpreter that " + path + " asks for is missing"};
            }
            break;
        case ENOEXEC:
            return {code, "launch path not executable: " + path + " is no program of this machine and names no " +
                              "interpreter"};
        case E2BIG:
            return {code, "the arguments and the environment of " + path + " are too long"};
        default:
            break;
    }
    const std::string reason = meaningOf(code);
    if (code == ENOENT || code == EACCES || code == ENOTDIR || code == ELOOP || code == ENAMETOOLONG) {
        return {code, "launch path not accessible: " + path + " (" + reason + ")"};
    }
    return {code, "could not start " + path + " (" + reason + ")"};
}

}  // namespace

std::variant<pid_t, Error> spawn(const ProcessOptions& options, const StandardStreams& streams) {
    if (cannotBePassed(options)) {
        return Error{EINVAL, "the path, an argument or the environment cannot be passed to a tool: " + options.path};
    }
    std::vector<std::string> arguments;
    arguments.reserve(options.arguments.size() + 1);
    arguments.push_back(options.path);
    arguments.insert(arguments.end(), options.arguments.begin(), options.arguments.end());
    std::vector<std::string> environment;
    if (options.environment) {
        for (const auto& [name, value] : *options.environment) {
            environment.push_back(name + '=');
            environment.back() += value;
        }
    }
    const auto argumentPointers = pointersTo(arguments);
    const auto environmentPointers = pointersTo(environment);

    FileActions actions;
    actions.use(streams.input, STDIN_FILENO);
    actions.use(streams.output, STDOUT_FILENO);
    actions.use(streams.error, STDERR_FILENO);
    actions.closeTheRest();
    const Attributes attributes;
    pid_t child = -1;
    const int code =
        ::posix_spawn(&child, options.path.c_str(), actions.get(), attributes.get(), argumentPointers.data(),
                      options.environment ? environmentPointers.data() : inheritedEnvironment());
    if (code != 0) {
        return describe(code, options.path);
    }
    return child;
}

}  // namespace platform::posix
