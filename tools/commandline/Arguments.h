// The words of a command line, sorted into options and operands.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace commandline {

// "-a SHA1", "-aSHA1", "--algorithm SHA1" and "--algorithm=SHA1" are the same, and "-zq" is "-z -q". Options and
// operands come in any order; "--" ends the options, and "-" alone is an operand.
struct Option {
    char letter = 0;  // 0: it has the word alone
    const char* word;
    const char* value = nullptr;  // what its value is called in the help; null: it takes none
    const char* text;
};

// What is wrong with the command line, for the user.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Arguments {
public:
    // Throws UsageError for an option that is not among those, and for a value that is missing or not wanted.
    Arguments(const std::vector<std::string>& words, std::span<const Option> options);

    bool has(const std::string& word) const { return m_values.contains(word); }
    std::optional<std::string> value(const std::string& word) const;  // of an option given twice, the latter
    std::vector<std::string> values(const std::string& word) const;   // of an option that may be repeated, in order
    const std::vector<std::string>& operands() const { return m_operands; }

private:
    class Reader;

    std::map<std::string, std::vector<std::string>> m_values;  // by the options' words
    std::vector<std::string> m_operands;
};

}  // namespace commandline
