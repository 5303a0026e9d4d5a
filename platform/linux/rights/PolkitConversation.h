// What the machine asks of an administrator, put to the user step by step until one is known or he gives up.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/rights/PasswordPrompt.h"

namespace platform::rights {

// The name and the password are asked for first; only then does the machine check that account, in a dialogue of its
// own, and what it asks beyond the password is asked in turn. After a wrong answer the user may try again, three times
// in all. One thread; only what the prompt answers may come from any other, at any time.
class PolkitConversation {
public:
    // The machine's own check of one account. What comes of it is told to asked, said and ended, never from within
    // these calls.
    class Check {
    public:
        virtual ~Check() = default;
        virtual void begin(const std::string& user) = 0;
        virtual void respond(const Secret& response) = 0;
        virtual void abandon() = 0;  // returns at once; nothing more comes of it
    };

    enum class Verdict {
        open,
        granted,
        cancelled,    // by the user
        refused,      // the answers were wrong, or the machine does not want any
        unavailable,  // nobody who might answer, or no answer could be checked
    };

    // `wake` is called from any thread when takeAnswer has something to take.
    PolkitConversation(PasswordPrompt& prompt, Check& check, std::vector<Administrator> administrators,
                       std::function<void()> wake);
    PolkitConversation(const PolkitConversation&) = delete;
    PolkitConversation& operator=(const PolkitConversation&) = delete;
    ~PolkitConversation();  // abandons the check and takes the question off the screen

    void begin();
    void takeAnswer();  // what the prompt has answered since, if anything

    void asked(const std::string& text, bool isEchoed);
    void said(const std::string& text);
    void ended(bool granted);

    Verdict verdict() const { return m_verdict; }

private:
    using Problem = PasswordRequest::Problem;
    enum class Step { password, checking, question, closing, over };
    struct Inbox;

    bool isAdministrator(const std::string& user) const;
    void ask(PasswordRequest request, Step step);
    void askForPassword(Problem problem);
    void take(std::optional<PasswordAnswer> answer);
    void tryPassword(PasswordAnswer answer);
    void wrong(Problem problem);
    void conclude(Verdict verdict);

    PasswordPrompt& m_prompt;
    Check& m_check;
    const std::vector<Administrator> m_administrators;
    const std::shared_ptr<Inbox> m_inbox;  // shared with answers that may come late

    Step m_step = Step::over;
    Verdict m_verdict = Verdict::open;
    int m_triesLeft = 3;
    Administrator m_chosen;
    std::optional<Secret> m_password;  // given, but not yet asked for by the machine
    bool m_wasAsked = false;           // by the machine, in the present check
    std::string m_details;             // what the machine has said since the last question
};

}  // namespace platform::rights
