#include "platform/macos/services/rights/MacAuthorization.h"

#include <Security/Authorization.h>
#include <Security/AuthorizationTags.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>

namespace platform::macos {

namespace {

struct MacAuthorizationRef : AuthorizationRef {
    explicit MacAuthorizationRef(::AuthorizationRef held) : ref(held) {}
    ~MacAuthorizationRef() override { ::AuthorizationFree(ref, kAuthorizationFlagDefaults); }
    MacAuthorizationRef(const MacAuthorizationRef&) = delete;
    MacAuthorizationRef& operator=(const MacAuthorizationRef&) = delete;

    ::AuthorizationRef const ref;
};

// The name and the password, without their ends; lives no longer than they do.
class Environment {
public:
    explicit Environment(const std::optional<Credentials>& credentials) {
        if (!credentials) {
            return;
        }
        m_items = {item(kAuthorizationEnvironmentUsername, credentials->user),
                   item(kAuthorizationEnvironmentPassword, credentials->password)};
        m_set = {.count = static_cast<UInt32>(m_items.size()), .items = m_items.data()};
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    const AuthorizationEnvironment* get() const { return m_set.count == 0 ? nullptr : &m_set; }

private:
    // The call only reads what it is given.
    static AuthorizationItem item(const char* name, const std::string& value) {
        return {.name = name,
                .valueLength = value.size(),
                .value = const_cast<char*>(value.data()),  // NOLINT(cppcoreguidelines-pro-type-const-cast)
                .flags = 0};
    }

    std::array<AuthorizationItem, 2> m_items{};
    AuthorizationEnvironment m_set{};
};

bool holdsNul(const std::string& text) { return text.find('\0') != std::string::npos; }

bool holdsNul(const std::optional<Credentials>& credentials) {
    return credentials && (holdsNul(credentials->user) || holdsNul(credentials->password));
}

// Calls that the system may drop some day are looked up; null then.
template <typename Call>
Call lookUp(const char* name) {
    return reinterpret_cast<Call>(::dlsym(RTLD_DEFAULT, name));  // NOLINT(cppcoreguidelines-pro-type-reinterpret-cast)
}

using ExecuteWithPrivileges = OSStatus (*)(::AuthorizationRef, const char*, AuthorizationFlags, char* const*,
                                           std::FILE**);
using CopyPrivilegedReference = OSStatus (*)(::AuthorizationRef*, AuthorizationFlags);

// The stream is this process's alone, and the tool's input is at its end: nobody is going to write to it.
void prepare(std::FILE* stream) {
    const int descriptor = ::fileno(stream);
    ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    ::shutdown(descriptor, SHUT_WR);  // fails on what is no socket
}

void drainAndClose(std::FILE* stream) {
    char bytes[4096];
    ssize_t count = 0;
    do {
        count = ::read(::fileno(stream), bytes, sizeof bytes);
    } while (count > 0 || (count < 0 && errno == EINTR));
    std::fclose(stream);
}

::AuthorizationRef systemsOwn(AuthorizationRef& ref) { return static_cast<MacAuthorizationRef&>(ref).ref; }

}  // namespace

int MacAuthorization::create(const std::optional<Credentials>& credentials, std::unique_ptr<AuthorizationRef>& made) {
    if (holdsNul(credentials)) {
        return errAuthorizationInvalidSet;
    }
    const Environment environment(credentials);
    ::AuthorizationRef ref = nullptr;
    const OSStatus status = ::AuthorizationCreate(nullptr, environment.get(), kAuthorizationFlagDefaults, &ref);
    if (status == errAuthorizationSuccess) {
        made = std::make_unique<MacAuthorizationRef>(ref);
    }
    return status;
}

int MacAuthorization::copyRights(AuthorizationRef& ref, const std::string& right,
                                 const std::optional<Credentials>& credentials, Interaction interaction) {
    if (holdsNul(credentials) || holdsNul(right)) {
        return errAuthorizationInvalidSet;
    }
    AuthorizationItem item{.name = right.c_str(), .valueLength = 0, .value = nullptr, .flags = 0};
    const AuthorizationRights rights{.count = 1, .items = &item};
    AuthorizationFlags flags = kAuthorizationFlagExtendRights | kAuthorizationFlagPreAuthorize;
    if (interaction == Interaction::allowed) {
        flags |= kAuthorizationFlagInteractionAllowed;
    }
    const Environment environment(credentials);
    return ::AuthorizationCopyRights(systemsOwn(ref), &rights, environment.get(), flags, nullptr);
}

int MacAuthorization::execute(AuthorizationRef& ref, const std::string& tool, const std::vector<std::string>& arguments,
                              bool drain) {
    const auto call = lookUp<ExecuteWithPrivileges>("AuthorizationExecuteWithPrivileges");
    if (call == nullptr) {
        return errAuthorizationToolExecuteFailure;
    }
    if (holdsNul(tool) || std::ranges::any_of(arguments, [](const std::string& text) { return holdsNul(text); })) {
        return errAuthorizationInvalidSet;
    }
    std::vector<std::string> texts = arguments;
    std::vector<char*> list;
    list.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        list.push_back(text.data());
    }
    list.push_back(nullptr);
    std::FILE* stream = nullptr;
    std::FILE** const asked = drain || m_tools.canReadAnother() ? &stream : nullptr;
    const OSStatus status = call(systemsOwn(ref), tool.c_str(), kAuthorizationFlagDefaults, list.data(), asked);
    if (status == errAuthorizationSuccess && stream != nullptr) {
        prepare(stream);
        if (!drain) {
            m_tools.readToEnd(stream);
            return status;
        }
        drainAndClose(stream);
    }
    m_tools.noteEnd();
    return status;
}

std::unique_ptr<AuthorizationRef> MacAuthorization::copyPrivilegedReference() {
    const auto call = lookUp<CopyPrivilegedReference>("AuthorizationCopyPrivilegedReference");
    if (call == nullptr) {
        return nullptr;
    }
    ::AuthorizationRef ref = nullptr;
    const OSStatus status = call(&ref, kAuthorizationFlagDefaults);
    if (status != errAuthorizationSuccess || ref == nullptr) {
        return nullptr;
    }
    return std::make_unique<MacAuthorizationRef>(ref);
}

}  // namespace platform::macos
