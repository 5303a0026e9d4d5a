#include "platform/linux/services/ConsoleUser.h"

#include <systemd/sd-login.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "platform/linux/services/Accounts.h"

namespace platform::linux_host {

namespace {

constexpr const char* loginScreen = "loginwindow";

struct Free {
    void operator()(void* memory) const noexcept { std::free(memory); }
};
using CString = std::unique_ptr<char, Free>;

std::optional<std::string> userName(uid_t uid) {
    const auto account = accountOf(uid);
    return account ? std::optional(account->name) : std::nullopt;
}

std::optional<std::string> userOfSession(const char* session) {
    char* text = nullptr;
    if (::sd_session_get_class(session, &text) < 0) {
        return std::nullopt;
    }
    const CString owned(text);
    const std::string_view kind = text;
    if (kind == "greeter" || kind == "lock-screen") {
        return loginScreen;
    }
    uid_t uid = 0;
    if (!kind.starts_with("user") || ::sd_session_get_uid(session, &uid) < 0) {
        return std::nullopt;
    }
    return userName(uid);
}

std::optional<std::string> userOfFirstSeat() {
    char* session = nullptr;
    uid_t ignored = 0;
    if (::sd_seat_get_active("seat0", &session, &ignored) < 0) {
        return std::nullopt;
    }
    const CString owned(session);
    return session == nullptr ? std::nullopt : userOfSession(session);
}

bool isActiveOnSeat(const char* session) {
    char* seat = nullptr;
    if (::sd_session_is_active(session) <= 0 || ::sd_session_get_seat(session, &seat) < 0) {
        return false;
    }
    const CString owned(seat);
    return seat != nullptr;
}

std::optional<std::string> userOfAnySeat() {
    char** sessions = nullptr;
    if (::sd_get_sessions(&sessions) < 0 || sessions == nullptr) {
        return std::nullopt;
    }
    std::optional<std::string> user;
    for (char** session = sessions; *session != nullptr; ++session) {
        const CString owned(*session);
        if (!user && isActiveOnSeat(*session)) {
            user = userOfSession(*session);
        }
    }
    std::free(sessions);
    return user;
}

std::optional<std::string> userWhoAskedForRights() {
    if (::getuid() != 0) {
        return std::nullopt;
    }
    for (const char* variable : {"SUDO_UID", "PKEXEC_UID"}) {
        const char* text = std::getenv(variable);
        if (text == nullptr) {
            continue;
        }
        const std::string_view digits = text;
        uid_t uid = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), uid);
        if (error == std::errc() && end == digits.data() + digits.size() && uid != 0) {
            return userName(uid);
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> consoleUser() {
    auto user = userOfFirstSeat();
    if (!user) {
        user = userOfAnySeat();
    }
    if (!user || user == loginScreen) {
        if (auto asking = userWhoAskedForRights()) {
            return asking;
        }
    }
    return user;
}

}  // namespace platform::linux_host
