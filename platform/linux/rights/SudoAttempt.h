// One run of sudo or su that is to start the helper, and the questions that it has for the user.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/rights/HelperLaunch.h"
#include "platform/linux/rights/PromptDialogue.h"
#include "platform/linux/rights/PromptReader.h"

namespace platform::rights {

struct SudoCommand {
    std::vector<std::string> command;
    std::vector<std::string> environment;
    std::string account;  // whose rights are used
    int keeper = -1;      // what the command's program inherits as number 3
};

struct AttemptResult {
    enum class Kind {
        granted,
        cancelled,
        wrongPassword,
        notAdministrator,
        lockedOut,
        anotherAccount,  // was named in an answer; the run was given up
        timedOut,        // the machine did not wait for an answer any longer; the question is still up
        unavailable,     // nothing was said about why, or nobody had answered yet
    };

    Kind kind = Kind::unavailable;
    std::unique_ptr<RightsSession> session{};  // granted
    std::optional<PasswordAnswer> answer{};    // anotherAccount
    std::string details{};                     // what there is to say to the user
};

class SudoAttempt {
public:
    // `administrators`: who may answer when the machine asks for the account's password. A null dialogue: nobody can
    // be asked.
    SudoAttempt(PromptDialogue* dialogue, std::vector<Administrator> administrators)
        : m_dialogue(dialogue), m_administrators(std::move(administrators)) {}

    // Blocks until it is over. `known` answers the first question for the account's password, of each program that asks
    // for it; nobody is asked for it then.
    AttemptResult run(const SudoCommand& command, std::optional<PasswordAnswer> known);

private:
    using Clock = std::chrono::steady_clock;
    using MaybeResult = std::optional<AttemptResult>;

    void wait();
    bool readMessages();
    MaybeResult takeQuestions();
    MaybeResult meet(const Question& question);
    void askUser(const Question& question, bool isRepeated);
    MaybeResult takeAnswer();
    MaybeResult send(const PasswordAnswer& answer);
    MaybeResult takeEnd();
    AttemptResult resultOfEnd(const std::vector<std::string>& lines) const;

    PromptDialogue* const m_dialogue;
    const std::vector<Administrator> m_administrators;
    std::string m_account;
    std::optional<PasswordAnswer> m_known;
    HelperLaunch* m_launch = nullptr;
    PromptReader m_reader;
    Question m_question;               // the last one
    std::set<std::string> m_answered;  // questions, to know one that comes again
    bool m_socketOpen = true;
    bool m_messagesOpen = true;
    Clock::time_point m_lastMessage;
    Clock::time_point m_end = Clock::time_point::max();  // when waiting for the exit is given up
};

}  // namespace platform::rights
