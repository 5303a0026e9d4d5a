#include "platform/linux/rights/PromptReader.h"

#include <algorithm>
#include <utility>

namespace platform::rights {

namespace {

constexpr std::size_t mostText = std::size_t{16} << 10U;
constexpr std::string_view promptBegin = PromptReader::sudoPrompt.substr(0, PromptReader::sudoPrompt.find('%'));
constexpr std::string_view promptEnd = "@@";
constexpr std::string_view plainPrompt = "Password:";
constexpr char escape = '\x1b';

bool isControl(char c) {
    constexpr char del = '\x7f';
    return (static_cast<unsigned char>(c) < ' ') || c == del;
}

// Where the terminal sequence that begins at `position` ends.
std::size_t endOfSequence(std::string_view text, std::size_t position) {
    ++position;
    if (position >= text.size() || text[position] != '[') {
        return std::min(position + 1, text.size());
    }
    do {
        ++position;
    } while (position < text.size() && (text[position] < '@' || text[position] > '~'));
    return std::min(position + 1, text.size());
}

// Without control characters and without blanks at its ends.
std::string cleaned(std::string_view line) {
    std::string result;
    for (std::size_t i = 0; i < line.size();) {
        if (line[i] == escape) {
            i = endOfSequence(line, i);
        } else {
            result += line[i] == '\t' ? " " : std::string(isControl(line[i]) ? 0 : 1, line[i]);
            ++i;
        }
    }
    result.erase(0, std::min(result.find_first_not_of(' '), result.size()));
    result.erase(result.find_last_not_of(' ') + 1);
    return result;
}

std::vector<std::string> linesIn(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        if (auto line = cleaned(text.substr(0, end)); !line.empty()) {
            lines.push_back(std::move(line));
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

std::size_t beginOfLastLine(std::string_view text) { return text.rfind('\n') + 1; }

}  // namespace

void PromptReader::append(std::string_view bytes) {
    m_text += bytes;
    if (m_text.size() > mostText) {
        m_text.erase(0, m_text.size() - mostText);
    }
}

std::optional<Question> PromptReader::next() {
    const std::size_t begin = m_text.find(promptBegin);
    if (begin != std::string::npos) {
        const std::size_t user = begin + promptBegin.size();
        const std::size_t end = m_text.find(promptEnd, user);
        if (end == std::string::npos) {
            return std::nullopt;
        }
        Question question{.user = cleaned(std::string_view(m_text).substr(user, end - user)),
                          .text = {},
                          .said = linesIn(std::string_view(m_text).substr(0, begin))};
        m_text.erase(0, end + promptEnd.size());
        return question;
    }
    const std::string_view last = std::string_view(m_text).substr(beginOfLastLine(m_text));
    return last.starts_with(plainPrompt) && last.substr(plainPrompt.size()) == " " ? unfinishedLine() : std::nullopt;
}

bool PromptReader::endsUnfinished() const {
    return !cleaned(std::string_view(m_text).substr(beginOfLastLine(m_text))).empty();
}

std::optional<Question> PromptReader::unfinishedLine() {
    if (!endsUnfinished()) {
        return std::nullopt;
    }
    const std::size_t begin = beginOfLastLine(m_text);
    Question question{.user = {},
                      .text = cleaned(std::string_view(m_text).substr(begin)),
                      .said = linesIn(std::string_view(m_text).substr(0, begin))};
    if (question.text == plainPrompt) {
        question.text.clear();
    }
    m_text.clear();
    return question;
}

std::vector<std::string> PromptReader::rest() { return linesIn(std::exchange(m_text, {})); }

}  // namespace platform::rights
