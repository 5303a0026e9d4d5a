// What sudo or su asks for, read from what they write to their standard error.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::rights {

struct Question {
    std::string user;               // whose password it is; empty: the program did not say
    std::string text;               // what is asked for instead of a password, as it is to be shown; empty: a password
    std::vector<std::string> said;  // the lines since the question before, none of them blank
};

// Bytes go in as they come, in pieces of any length. Of endless output only the last part is kept; control characters
// and terminal sequences are left out of every text.
class PromptReader {
public:
    // What sudo is to ask for a password with (SUDO_PROMPT): it says whose, and nothing else prints it. Has no
    // character that means anything to a shell.
    static constexpr std::string_view sudoPrompt = "@@wickfield-rights:%p@@";

    void append(std::string_view bytes);

    // The next request for a password that has come whole: sudoPrompt, or "Password: " at the very end.
    std::optional<Question> next();

    // Whether the text ends in the middle of a line. When nothing follows for a while, that is a question too.
    bool endsUnfinished() const;
    std::optional<Question> unfinishedLine();

    // The lines since the last question, for a program that has ended.
    std::vector<std::string> rest();

private:
    Question questionUpTo(std::size_t end);

    std::string m_text;  // since the last question
};

}  // namespace platform::rights
