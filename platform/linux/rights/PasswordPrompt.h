// How a user is asked for an administrator's password.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/rights/Secret.h"

namespace platform::rights {

struct Administrator {
    std::string user;      // the account's name
    std::string realName;  // as it is shown; empty: the account's name is
};

struct PasswordRequest {
    enum class Problem {
        none,
        wrongPassword,     // may try again
        notAdministrator,  // the password was right, but this account may not; another account may be named
        lockedOut,         // no further attempt: the prompt only says so, with the one button that closes it
    };

    std::vector<Administrator> administrators;  // who may answer, the preferred one first; never empty
    bool mayNameAnother = false;                // an account that is not among them may be named too
    std::string user;                           // the account that is chosen at first; empty: the first of them
    std::string question;   // what the machine asks for, when it is not simply a password ("Verification code:")
    bool isEchoed = false;  // what is typed may be seen
    Problem problem = Problem::none;  // of the previous answer
    std::string details;              // what the machine says about it, in its own words; empty: nothing
};

struct PasswordAnswer {
    std::string user;
    Secret password;
};

class PasswordPrompt {
public:
    virtual ~PasswordPrompt() = default;

    // None: cancelled. At most once for an answer; a cancel may follow it, while the answer is being checked.
    using Answered = std::function<void(std::optional<PasswordAnswer>)>;

    // Puts the question on the screen; when one is up already it gets this new state, the name and the focus kept.
    // After an answer it stays up, and says that the password is being checked, until the next ask or close. Any
    // thread; returns at once. `answered` is called on any thread, the main thread for a window, and may come late:
    // whoever has asked again or closed meanwhile is to ignore it.
    virtual void ask(PasswordRequest request, Answered answered) = 0;

    // Takes the question off the screen. Any thread; returns at once; without a question it does nothing.
    virtual void close() = 0;

    // The account that every answer names, where that is known beforehand: its password is then to be checked, even if
    // these rights were granted a moment ago. None: a user answers, who is asked only for what is needed.
    virtual std::optional<std::string> knownUser() const { return std::nullopt; }
};

}  // namespace platform::rights
