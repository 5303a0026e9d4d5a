#include "tools/commandline/Arguments.h"

#include <algorithm>

namespace commandline {

class Arguments::Reader {
public:
    Reader(Arguments& arguments, const std::vector<std::string>& words, std::span<const Option> options)
        : m_arguments(arguments), m_words(words), m_options(options) {}

    void read() {
        bool optionsEnded = false;
        while (m_next < m_words.size()) {
            const std::string& word = m_words[m_next++];
            if (optionsEnded || word == "-" || !word.starts_with('-')) {
                m_arguments.m_operands.push_back(word);
            } else if (word == "--") {
                optionsEnded = true;
            } else if (word.starts_with("--")) {
                readWord(word.substr(2));
            } else {
                readLetters(word.substr(1));
            }
        }
    }

private:
    void readWord(const std::string& text) {
        const auto equals = text.find('=');
        const std::string word = text.substr(0, equals);
        const auto option = std::ranges::find(m_options, word, &Option::word);
        if (option == m_options.end()) {
            throw UsageError("unknown option --" + word);
        }
        if (option->value == nullptr && equals != std::string::npos) {
            throw UsageError("the option --" + word + " takes no value");
        }
        set(*option, equals == std::string::npos ? std::nullopt : std::optional(text.substr(equals + 1)));
    }

    void readLetters(const std::string& letters) {
        for (std::size_t at = 0; at < letters.size(); ++at) {
            const auto option = std::ranges::find(m_options, letters[at], &Option::letter);
            if (option == m_options.end()) {
                throw UsageError(std::string("unknown option -") + letters[at]);
            }
            if (option->value != nullptr && at + 1 < letters.size()) {
                set(*option, letters.substr(at + 1));
                return;
            }
            set(*option, std::nullopt);
        }
    }

    void set(const Option& option, std::optional<std::string> value) {
        if (option.value != nullptr && !value) {
            if (m_next == m_words.size()) {
                throw UsageError(std::string("the option --") + option.word + " needs a value");
            }
            value = m_words[m_next++];
        }
        m_arguments.m_values[option.word].push_back(value.value_or(""));
    }

    Arguments& m_arguments;
    const std::vector<std::string>& m_words;
    const std::span<const Option> m_options;
    std::size_t m_next = 0;
};

Arguments::Arguments(const std::vector<std::string>& words, std::span<const Option> options) {
    Reader(*this, words, options).read();
}

std::optional<std::string> Arguments::value(const std::string& word) const {
    const auto found = m_values.find(word);
    return found == m_values.end() ? std::nullopt : std::optional(found->second.back());
}

std::vector<std::string> Arguments::values(const std::string& word) const {
    const auto found = m_values.find(word);
    return found == m_values.end() ? std::vector<std::string>() : found->second;
}

}  // namespace commandline
