#include "tests/rights/live/driver/ScriptedPrompt.h"

#include <thread>
#include <utility>

namespace {

using platform::rights::PasswordAnswer;
using platform::rights::PasswordRequest;
using platform::rights::Secret;

const char* textOf(PasswordRequest::Problem problem) {
    switch (problem) {
        case PasswordRequest::Problem::none:
            return "none";
        case PasswordRequest::Problem::wrongPassword:
            return "wrongPassword";
        case PasswordRequest::Problem::notAdministrator:
            return "notAdministrator";
        case PasswordRequest::Problem::lockedOut:
            return "lockedOut";
    }
    return "?";
}

std::string oneLine(std::string text) {
    for (char& c : text) {
        c = c == '\n' || c == '\t' ? ' ' : c;
    }
    return text;
}

// Fields between tabs: problem, administrators, chosen user, may another be named, question, details.
std::string describe(const PasswordRequest& request) {
    std::string administrators;
    for (const auto& administrator : request.administrators) {
        administrators += administrators.empty() ? "" : ",";
        administrators += administrator.user;
    }
    return std::string(textOf(request.problem)) + '\t' + administrators + '\t' + request.user + '\t' +
           (request.mayNameAnother ? "any" : "these") + '\t' + oneLine(request.question) + '\t' +
           oneLine(request.details);
}

}  // namespace

void ScriptedPrompt::add(Step step) {
    const std::lock_guard lock(m_mutex);
    m_steps.push_back(std::move(step));
}

std::vector<std::string> ScriptedPrompt::questions() {
    const std::lock_guard lock(m_mutex);
    return m_questions;
}

void ScriptedPrompt::ask(PasswordRequest request, Answered answered) {
    const std::lock_guard lock(m_mutex);
    m_open = true;
    m_questions.push_back(describe(request));
    if (m_steps.empty()) {
        return;
    }
    Step step = std::move(m_steps.front());
    m_steps.pop_front();
    if (step.user.empty()) {
        step.user = !request.user.empty() ? request.user : request.administrators.front().user;
    }
    std::thread([step = std::move(step), answered = std::move(answered)] {
        if (!step.password) {
            answered(std::nullopt);
            return;
        }
        answered(PasswordAnswer{.user = step.user, .password = Secret(*step.password)});
        if (step.cancelAfter) {
            std::this_thread::sleep_for(*step.cancelAfter);
            answered(std::nullopt);
        }
    }).detach();
}

void ScriptedPrompt::close() {
    const std::lock_guard lock(m_mutex);
    m_open = false;
}

bool ScriptedPrompt::isOpen() {
    const std::lock_guard lock(m_mutex);
    return m_open;
}
