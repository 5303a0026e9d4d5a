// Answers for nobody: a prompt that follows a script and remembers what it was asked.
#pragma once

#include <chrono>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/rights/PasswordPrompt.h"

// A question for which the script has nothing stays unanswered.
class ScriptedPrompt : public platform::rights::PasswordPrompt {
public:
    struct Step {
        std::optional<std::string> password;                   // none: cancel
        std::string user;                                      // empty: whoever is chosen at first
        std::optional<std::chrono::milliseconds> cancelAfter;  // after the answer
    };

    void add(Step step);
    std::vector<std::string> questions();  // one line for each, in order

    void ask(platform::rights::PasswordRequest request, Answered answered) override;
    void close() override;
    bool isOpen();

private:
    std::mutex m_mutex;
    std::deque<Step> m_steps;
    std::vector<std::string> m_questions;
    bool m_open = false;
};
