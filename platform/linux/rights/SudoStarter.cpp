#include "platform/linux/rights/SudoStarter.h"

#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/rights/Accounts.h"
#include "platform/linux/rights/Administrators.h"
#include "platform/linux/rights/PromptDialogue.h"
#include "platform/linux/rights/PromptReader.h"
#include "platform/linux/rights/SudoAttempt.h"
#include "platform/linux/rights/wire/HelperPath.h"

namespace platform::rights {

namespace {

using Kind = AttemptResult::Kind;
using Problem = PasswordRequest::Problem;

constexpr const char* root = "root";
constexpr const char* inherited = "/proc/self/fd/3";
constexpr const char* helper = wire::helperPath;
constexpr int mostWrongPasswords = 3;

struct Programs {
    std::string sudo;
    std::string su;
    int keeper;  // the helper's own program
};

// Such a path is the same to a shell as it is to us.
bool isPlain(std::string_view path) {
    return path.starts_with('/') && std::ranges::all_of(path, [](char c) {
               return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                      std::string_view("/._-").find(c) != std::string_view::npos;
           });
}

bool runsAsRoot(const std::string& program) {
    struct stat status {};
    return ::stat(program.c_str(), &status) == 0 && status.st_uid == 0 && (status.st_mode & S_ISUID) != 0;
}

// What the user's own sudo may need of the environment (tickets, sockets) stays; the texts are to be the untranslated
// ones.
std::vector<std::string> sudoEnvironment() {
    std::vector<std::string> variables;
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
        const std::string_view text = *variable;
        if (!text.starts_with("LANGUAGE=") && !text.starts_with("LC_ALL=") && !text.starts_with("SUDO_")) {
            variables.emplace_back(text);
        }
    }
    variables.emplace_back("LC_ALL=C");
    variables.push_back("SUDO_PROMPT=" + std::string(PromptReader::sudoPrompt));
    return variables;
}

enum class Ask { no, whenNeeded, always };

SudoCommand commandOfSudo(const Programs& programs, const std::string& account, Ask ask) {
    SudoCommand made{.command = {inherited, programs.sudo, "-S"},
                     .environment = sudoEnvironment(),
                     .account = account,
                     .keeper = programs.keeper};
    if (ask != Ask::whenNeeded) {
        made.command.emplace_back(ask == Ask::no ? "-n" : "-k");
    }
    made.command.insert(made.command.end(), {"-u", root, "--", helper});
    return made;
}

SudoCommand commandOfSu(const Programs& programs, const std::string& account) {
    // Other texts than these two paths never get into what the shell reads.
    const std::string line = account == root ? std::string("exec ") + helper
                                             : "SUDO_PROMPT='" + std::string(PromptReader::sudoPrompt) + "' exec " +
                                                   programs.sudo + " -S -k -u root -- " + helper;
    // With "-c" su would begin a session of its own, and leave the keeper's.
    return {.command = {inherited, programs.su, account, "-s", "/bin/sh", "--session-command", line},
            .environment = {"LC_ALL=C", "PATH=/usr/sbin:/usr/bin:/sbin:/bin"},
            .account = account,
            .keeper = programs.keeper};
}

// From the first question to the end of the matter.
class Conversation {
public:
    Conversation(Programs programs, Administrator user, PasswordPrompt& prompt);
    StartResult hold();

private:
    // `answer`: for the account, where one was given already.
    AttemptResult attempt(const std::string& account, std::optional<PasswordAnswer> answer);
    // What is to be tried after an attempt that led to nothing; none: cancelled.
    std::optional<PasswordAnswer> nextAnswer(const std::string& account, AttemptResult result);
    std::optional<PasswordAnswer> ask(Problem problem, const std::string& account, const std::string& details);

    const Programs m_programs;
    const Administrator m_user;
    const std::optional<std::string> m_knownUser;
    const std::vector<Administrator> m_members;   // of the groups of administrators
    std::vector<Administrator> m_administrators;  // as they are offered
    PromptDialogue m_dialogue;
    int m_wrongPasswords = 0;   // that su has seen; sudo counts its own
    bool m_isRootOnly = false;  // sudo cannot be used
};

Conversation::Conversation(Programs programs, Administrator user, PasswordPrompt& prompt)
    : m_programs(std::move(programs)),
      m_user(std::move(user)),
      m_knownUser(prompt.knownUser()),
      m_members(administratorsFrom({"unix-group:sudo", "unix-group:wheel", "unix-group:admin"}, ::getuid())),
      m_dialogue(prompt) {
    if (m_members.empty() || m_members.front().user != m_user.user) {
        m_administrators = m_members;
    }
    m_administrators.push_back(m_user);
}

StartResult Conversation::hold() {
    std::optional<PasswordAnswer> answer;
    if (m_knownUser && *m_knownUser != m_user.user) {
        answer = ask(Problem::none, {}, {});
        if (!answer) {
            return {.status = StartStatus::cancelled, .session = nullptr};
        }
    }
    for (;;) {
        const std::string account = answer ? answer->user : m_user.user;
        AttemptResult result = attempt(account, std::exchange(answer, std::nullopt));
        if (result.kind == Kind::granted) {
            return {.status = StartStatus::granted, .session = std::move(result.session)};
        }
        const bool isOneTooMany = result.kind == Kind::wrongPassword && ++m_wrongPasswords == mostWrongPasswords;
        if (result.kind == Kind::lockedOut || isOneTooMany) {
            static_cast<void>(ask(Problem::lockedOut, account, result.details));
            return {.status = StartStatus::refused, .session = nullptr};
        }
        if (result.kind == Kind::unavailable && (m_dialogue.hasAsked() || !runsAsRoot(m_programs.su))) {
            return {};
        }
        answer = nextAnswer(account, std::move(result));
        if (!answer) {
            return {.status = StartStatus::cancelled, .session = nullptr};
        }
    }
}

std::optional<PasswordAnswer> Conversation::nextAnswer(const std::string& account, AttemptResult result) {
    switch (result.kind) {
        case Kind::anotherAccount:
            return std::move(result.answer);
        case Kind::timedOut:
            return m_dialogue.waitForAnswer();
        case Kind::wrongPassword:
            return ask(Problem::wrongPassword, account, result.details);
        case Kind::notAdministrator:
            return ask(Problem::notAdministrator, account, result.details);
        case Kind::unavailable:
            m_isRootOnly = true;
            m_administrators = {accountNamed(root).value_or(Administrator{.user = root, .realName = {}})};
            return ask(Problem::none, {}, {});
        case Kind::granted:
        case Kind::cancelled:
        case Kind::lockedOut:
            break;
    }
    return std::nullopt;
}

AttemptResult Conversation::attempt(const std::string& account, std::optional<PasswordAnswer> answer) {
    SudoAttempt attempt(&m_dialogue, m_administrators);
    if (account == m_user.user && !m_isRootOnly) {
        return attempt.run(commandOfSudo(m_programs, account, m_knownUser ? Ask::always : Ask::whenNeeded),
                           std::move(answer));
    }
    if (!accountNamed(account) || (m_isRootOnly && account != root)) {
        return {.kind = Kind::wrongPassword};
    }
    return attempt.run(commandOfSu(m_programs, account), std::move(answer));
}

std::optional<PasswordAnswer> Conversation::ask(Problem problem, const std::string& account,
                                                const std::string& details) {
    PasswordRequest request;
    request.administrators = m_administrators;
    request.mayNameAnother = !m_isRootOnly;
    request.problem = problem;
    request.details = details;
    if (problem == Problem::notAdministrator) {
        request.administrators = m_members;
        std::erase_if(request.administrators, [&](const Administrator& one) { return one.user == account; });
        if (request.administrators.empty()) {
            request.administrators = {m_user};
        }
    } else {
        request.user = account;
    }
    m_dialogue.ask(std::move(request));
    return m_dialogue.waitForAnswer();
}

}  // namespace

SudoStarter::SudoStarter(std::string sudo, std::string su) : m_sudo(std::move(sudo)), m_su(std::move(su)) {}

StartResult SudoStarter::start(const HelperImage& image, PasswordPrompt* prompt) {
    const auto user = accountOf(::getuid());
    // Such a process cannot get more rights than it has, whatever it starts.
    if (!user || !isPlain(m_sudo) || image.descriptor() < 0 || ::prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) == 1) {
        return {};
    }
    const Programs programs{.sudo = m_sudo, .su = m_su, .keeper = image.descriptor()};
    if (prompt != nullptr) {
        return Conversation(programs, *user, *prompt).hold();
    }
    AttemptResult result = SudoAttempt(nullptr, {}).run(commandOfSudo(programs, user->user, Ask::no), std::nullopt);
    return result.kind == Kind::granted
               ? StartResult{.status = StartStatus::granted, .session = std::move(result.session)}
               : StartResult{};
}

}  // namespace platform::rights
