#include "platform/linux/rights/SudoAttempt.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <utility>
#include <variant>

#include "platform/linux/rights/Accounts.h"
#include "platform/linux/rights/SudoMessages.h"
#include "platform/posix/Poll.h"

namespace platform::rights {

namespace {

using Kind = AttemptResult::Kind;
using Problem = PasswordRequest::Problem;

constexpr std::chrono::milliseconds silence{500};  // after which an unfinished line is a question
constexpr std::chrono::milliseconds look{50};      // where the host cannot tell that a child has ended
constexpr std::chrono::seconds graceForExit{5};    // after its end of the socket was closed

// PAM takes no longer answer, and a line is what is sent.
bool canBeSent(std::string_view password) {
    constexpr std::size_t longest = 511;
    return password.size() <= longest && password.find_first_of({"\0\n", 2}) == std::string_view::npos;
}

std::string keyOf(const Question& question) { return question.user + '\n' + question.text; }

}  // namespace

AttemptResult SudoAttempt::run(const SudoCommand& command, std::optional<PasswordAnswer> known) {
    m_account = command.account;
    m_known = std::move(known);
    auto started = HelperLaunch::start(command.command, command.environment, command.keeper);
    m_launch = std::get_if<HelperLaunch>(&started);
    if (m_launch == nullptr) {
        return {};
    }
    for (;;) {
        wait();
        if (m_dialogue != nullptr && m_dialogue->isCancelled()) {
            return {.kind = Kind::cancelled};
        }
        switch (m_launch->progress()) {
            case HelperLaunch::Progress::running:
                return {.kind = Kind::granted, .session = m_launch->takeSession()};
            case HelperLaunch::Progress::ended:
                m_end = m_socketOpen ? Clock::now() + graceForExit : m_end;
                m_socketOpen = false;
                break;
            case HelperLaunch::Progress::waiting:
                break;
        }
        for (const auto step : {&SudoAttempt::takeEnd, &SudoAttempt::takeQuestions, &SudoAttempt::takeAnswer}) {
            if (MaybeResult result = (this->*step)()) {
                return std::move(*result);
            }
        }
    }
}

void SudoAttempt::wait() {
    std::array<pollfd, 4> watched{{{m_socketOpen ? m_launch->socket() : -1, POLLIN, 0},
                                   {m_messagesOpen ? m_launch->messages() : -1, POLLIN, 0},
                                   {m_launch->exitWatch(), POLLIN, 0},
                                   {m_dialogue != nullptr ? m_dialogue->descriptor() : -1, POLLIN, 0}}};
    Clock::time_point until = m_end;
    if (m_reader.endsUnfinished()) {
        until = std::min(until, m_lastMessage + silence);
    }
    if (m_launch->exitWatch() < 0) {
        until = std::min(until, posix::deadlineAfter(look));
    }
    posix::pollUntil(watched, until);
}

// False: there is nothing more for now.
bool SudoAttempt::readMessages() {
    std::array<char, 4096> bytes{};
    const ssize_t got = ::read(m_launch->messages(), bytes.data(), bytes.size());
    if (got > 0) {
        m_reader.append({bytes.data(), static_cast<std::size_t>(got)});
        m_lastMessage = Clock::now();
        return true;
    }
    m_messagesOpen = got < 0 && (errno == EAGAIN || errno == EINTR);
    return false;
}

SudoAttempt::MaybeResult SudoAttempt::takeQuestions() {
    while (m_messagesOpen && readMessages()) {
    }
    while (auto question = m_reader.next()) {
        if (MaybeResult result = meet(*question)) {
            return result;
        }
    }
    if (m_reader.endsUnfinished() && Clock::now() >= m_lastMessage + silence) {
        return meet(*m_reader.unfinishedLine());
    }
    return std::nullopt;
}

SudoAttempt::MaybeResult SudoAttempt::meet(const Question& question) {
    m_question = question;
    const bool isRepeated = m_answered.contains(keyOf(question));
    const bool isForAccount = question.text.empty() && (question.user.empty() || question.user == m_account);
    if (m_known && isForAccount && !isRepeated) {
        return send(*m_known);
    }
    if (m_dialogue == nullptr) {
        return AttemptResult{};
    }
    askUser(question, isRepeated);
    return std::nullopt;
}

void SudoAttempt::askUser(const Question& question, bool isRepeated) {
    PasswordRequest request;
    request.administrators = m_administrators;
    request.mayNameAnother = true;
    if (!m_answered.empty()) {
        request.user = m_account;
    }
    // Nobody else can answer this: it is the next step for the account, or the machine wants one particular password.
    const bool isForAnother = !question.user.empty() && question.user != m_account;
    if (!question.text.empty() || isForAnother) {
        const std::string& user = isForAnother ? question.user : m_account;
        request.administrators = {accountNamed(user).value_or(Administrator{.user = user, .realName = {}})};
        request.mayNameAnother = false;
        request.user = user;
    }
    request.question = question.text;
    request.problem = isRepeated ? Problem::wrongPassword : Problem::none;
    request.details = detailsIn(question.said, isRepeated ? After::wrongPassword : After::nothing);
    m_dialogue->ask(std::move(request));
}

SudoAttempt::MaybeResult SudoAttempt::takeAnswer() {
    auto answer = m_dialogue != nullptr ? m_dialogue->takeAnswer() : std::nullopt;
    if (!answer) {
        return std::nullopt;
    }
    const bool isWanted = !m_question.user.empty() && answer->user == m_question.user;
    if (answer->user != m_account && !isWanted) {
        return AttemptResult{.kind = Kind::anotherAccount, .answer = std::move(answer)};
    }
    return send(*answer);
}

SudoAttempt::MaybeResult SudoAttempt::send(const PasswordAnswer& answer) {
    if (!canBeSent(answer.password.view())) {
        return AttemptResult{.kind = Kind::wrongPassword};
    }
    m_answered.insert(keyOf(m_question));
    // Nobody there to read it shows as the end of the program.
    if (wire::sendBytes(m_launch->socket(), answer.password.view()) == 0) {
        static_cast<void>(wire::sendBytes(m_launch->socket(), "\n"));
    }
    return std::nullopt;
}

SudoAttempt::MaybeResult SudoAttempt::takeEnd() {
    const bool hasExited = m_launch->exitCode().has_value();
    if (!hasExited && Clock::now() < m_end) {
        return std::nullopt;
    }
    while (m_messagesOpen && readMessages()) {
    }
    std::vector<std::string> lines;
    while (auto question = m_reader.next()) {
        lines = question->said;
    }
    const auto last = m_reader.rest();
    lines.insert(lines.end(), last.begin(), last.end());
    return resultOfEnd(lines);
}

AttemptResult SudoAttempt::resultOfEnd(const std::vector<std::string>& lines) const {
    std::string details = detailsIn(lines, After::nothing);
    switch (endingIn(lines)) {
        case Ending::wrongPassword:
            return {.kind = Kind::wrongPassword, .details = std::move(details)};
        case Ending::notAdministrator:
            return {.kind = Kind::notAdministrator, .details = std::move(details)};
        case Ending::lockedOut:
            return {.kind = Kind::lockedOut, .details = std::move(details)};
        case Ending::timedOut:
            return {.kind = Kind::timedOut};
        case Ending::other:
            break;
    }
    const bool canSayWhy = !m_answered.empty() && !details.empty();
    return {.kind = canSayWhy ? Kind::lockedOut : Kind::unavailable, .details = std::move(details)};
}

}  // namespace platform::rights
