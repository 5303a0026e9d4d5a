#include "platform/linux/rights/PolkitConversation.h"

#include <algorithm>
#include <cctype>
#include <deque>
#include <mutex>
#include <string_view>
#include <utility>

namespace platform::rights {

namespace {

std::string trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string()
                                           : std::string(text.substr(first, text.find_last_not_of(blanks) + 1 - first));
}

// The machine's modules ask in English here, whatever the user's language: they see none of his environment.
bool isForPassword(std::string_view text) {
    constexpr std::string_view word = "password";
    return std::search(text.begin(), text.end(), word.begin(), word.end(),
                       [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; }) != text.end();
}

// An answer is one line for the machine: no password goes on after the end of it.
bool isOneLine(const Secret& text) {
    return text.view().find_first_of(std::string_view("\n\0", 2)) == text.view().npos;
}

}  // namespace

struct PolkitConversation::Inbox {
    std::mutex mutex;
    std::function<void()> wake;  // empty once nobody takes answers any more
    unsigned question = 0;       // the one that stands
    std::deque<std::optional<PasswordAnswer>> answers{};

    void put(unsigned to, std::optional<PasswordAnswer> answer) {
        const std::lock_guard lock(mutex);
        if (wake && to == question) {
            answers.push_back(std::move(answer));
            wake();
        }
    }

    unsigned nextQuestion() {
        const std::lock_guard lock(mutex);
        answers.clear();
        return ++question;
    }

    void close() {
        const std::lock_guard lock(mutex);
        answers.clear();
        wake = nullptr;
    }
};

PolkitConversation::PolkitConversation(PasswordPrompt& prompt, Check& check, std::vector<Administrator> administrators,
                                       std::function<void()> wake)
    : m_prompt(prompt),
      m_check(check),
      m_administrators(std::move(administrators)),
      m_inbox(std::make_shared<Inbox>()) {
    m_inbox->wake = std::move(wake);
}

PolkitConversation::~PolkitConversation() {
    conclude(Verdict::refused);
    m_inbox->close();
    m_prompt.close();
}

void PolkitConversation::begin() {
    const auto known = m_prompt.knownUser();
    if (m_administrators.empty() || (known && !isAdministrator(*known))) {
        conclude(Verdict::unavailable);
        return;
    }
    m_chosen = m_administrators.front();
    askForPassword(Problem::none);
}

bool PolkitConversation::isAdministrator(const std::string& user) const {
    return std::ranges::find(m_administrators, user, &Administrator::user) != m_administrators.end();
}

void PolkitConversation::askForPassword(Problem problem) {
    PasswordRequest request;
    request.administrators = m_administrators;
    request.user = m_chosen.user;
    request.problem = problem;
    ask(std::move(request), problem == Problem::lockedOut ? Step::closing : Step::password);
}

void PolkitConversation::ask(PasswordRequest request, Step step) {
    m_step = step;
    request.details = std::exchange(m_details, {});
    m_prompt.ask(std::move(request), [inbox = m_inbox, question = m_inbox->nextQuestion()](auto answer) {
        inbox->put(question, std::move(answer));
    });
}

void PolkitConversation::takeAnswer() {
    while (m_step != Step::over) {
        std::optional<PasswordAnswer> answer;
        {
            const std::lock_guard lock(m_inbox->mutex);
            if (m_inbox->answers.empty()) {
                return;
            }
            answer = std::move(m_inbox->answers.front());
            m_inbox->answers.pop_front();
        }
        take(std::move(answer));
    }
}

void PolkitConversation::take(std::optional<PasswordAnswer> answer) {
    if (m_step == Step::closing) {
        conclude(Verdict::refused);
    } else if (!answer) {
        conclude(Verdict::cancelled);
    } else if (m_step == Step::password) {
        tryPassword(std::move(*answer));
    } else if (m_step == Step::question) {
        if (!isOneLine(answer->password)) {
            m_check.abandon();
            wrong(Problem::wrongPassword);
            return;
        }
        m_step = Step::checking;
        m_check.respond(answer->password);
    }
}

void PolkitConversation::tryPassword(PasswordAnswer answer) {
    const auto named = std::ranges::find(m_administrators, answer.user, &Administrator::user);
    if (named == m_administrators.end()) {
        wrong(Problem::notAdministrator);
        return;
    }
    m_chosen = *named;
    if (!isOneLine(answer.password)) {
        wrong(Problem::wrongPassword);
        return;
    }
    m_password = std::move(answer.password);
    m_wasAsked = false;
    m_step = Step::checking;
    m_check.begin(m_chosen.user);
}

void PolkitConversation::asked(const std::string& text, bool isEchoed) {
    if (m_step != Step::checking) {
        return;
    }
    m_wasAsked = true;
    if (m_password && !isEchoed && isForPassword(text)) {
        const Secret password = std::move(*std::exchange(m_password, std::nullopt));
        m_check.respond(password);
        return;
    }
    PasswordRequest request;
    request.administrators = {m_chosen};
    request.user = m_chosen.user;
    request.question = trimmed(text);
    request.isEchoed = isEchoed;
    ask(std::move(request), Step::question);
}

void PolkitConversation::said(const std::string& text) {
    if (m_step == Step::checking || m_step == Step::question) {
        m_details += m_details.empty() ? "" : "\n";
        m_details += trimmed(text);
    }
}

void PolkitConversation::ended(bool granted) {
    if (m_step != Step::checking && m_step != Step::question) {
        return;
    }
    m_password.reset();
    if (granted) {
        conclude(Verdict::granted);
    } else if (m_wasAsked) {
        wrong(Problem::wrongPassword);
    } else if (!m_details.empty()) {
        // The machine has said why it does not want to hear the password: another one is of no use.
        askForPassword(Problem::lockedOut);
    } else {
        conclude(Verdict::unavailable);
    }
}

void PolkitConversation::wrong(Problem problem) { askForPassword(--m_triesLeft > 0 ? problem : Problem::lockedOut); }

// The question stays up while rights that were granted are taken into use.
void PolkitConversation::conclude(Verdict verdict) {
    if (m_verdict != Verdict::open) {
        return;
    }
    m_step = Step::over;
    m_verdict = verdict;
    m_password.reset();
    m_check.abandon();
    if (verdict != Verdict::granted) {
        m_prompt.close();
    }
}

}  // namespace platform::rights
