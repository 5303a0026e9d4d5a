#include "platform/linux/rights/SudoMessages.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace platform::rights {

namespace {

struct Meaning {
    std::string_view text;
    Ending ending;
};

// Asked in this order: sudo counts the attempts also when nobody has answered the last one.
constexpr std::array meanings{
    Meaning{"timed out reading password", Ending::timedOut},
    Meaning{"incorrect password attempt", Ending::lockedOut},
    Meaning{"not in the sudoers file", Ending::notAdministrator},
    Meaning{"is not allowed to ", Ending::notAdministrator},
    Meaning{"may not run sudo", Ending::notAdministrator},
    Meaning{"su: Authentication failure", Ending::wrongPassword},
    Meaning{"su: ", Ending::notAdministrator},
    Meaning{"This account is currently not available.", Ending::notAdministrator},
};

constexpr std::string_view rejection = "Sorry, try again.";
constexpr std::array<std::string_view, 5> noise{rejection, "sudo: a password is required",
                                                "sudo: no password was provided", "su: Authentication failure",
                                                "sudo: timed out reading password"};
constexpr std::string_view unknownHost = "sudo: unable to resolve host";
constexpr std::string_view lectureBegin = "We trust you have received the usual lecture";
constexpr std::string_view lectureEnd = "#3)";
constexpr std::string_view lectureAfterword = "For security reasons, the password you type will not be visible.";

bool isNoise(const std::string& line) {
    return std::ranges::find(noise, line) != noise.end() || line.starts_with(unknownHost) || line == lectureAfterword;
}

void eraseLecture(std::vector<std::string>& lines) {
    const auto startsWith = [](std::string_view text) {
        return [text](const std::string& line) { return line.starts_with(text); };
    };
    const auto begin = std::ranges::find_if(lines, startsWith(lectureBegin));
    const auto end = std::find_if(begin, lines.end(), startsWith(lectureEnd));
    if (end != lines.end()) {
        lines.erase(begin, end + 1);
    }
}

std::string_view withoutProgram(std::string_view line) {
    for (const std::string_view program : {"sudo: ", "su: "}) {
        if (line.starts_with(program)) {
            return line.substr(program.size());
        }
    }
    return line;
}

}  // namespace

Ending endingIn(const std::vector<std::string>& lines) {
    for (const auto& meaning : meanings) {
        // The name of a program stands at the beginning of its line.
        const bool isProgram = meaning.text.starts_with("su: ");
        const auto says = [&](const std::string& line) {
            return isProgram ? line.starts_with(meaning.text) : line.find(meaning.text) != std::string::npos;
        };
        if (std::ranges::any_of(lines, says)) {
            return meaning.ending;
        }
    }
    return Ending::other;
}

std::string detailsIn(std::vector<std::string> lines, After after) {
    constexpr std::size_t mostLines = 6;
    constexpr std::size_t longestLine = 200;
    if (after == After::wrongPassword && !lines.empty() && std::ranges::find(lines, rejection) == lines.end()) {
        lines.erase(lines.begin());
    }
    eraseLecture(lines);
    std::erase_if(lines, isNoise);
    if (lines.size() > mostLines) {
        lines.erase(lines.begin(), lines.end() - mostLines);
    }
    std::string details;
    for (const auto& line : lines) {
        std::string_view text = withoutProgram(line);
        std::size_t length = std::min(text.size(), longestLine);
        while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
            --length;  // not in the middle of a character
        }
        details += details.empty() ? "" : "\n";
        details += text.substr(0, length);
    }
    return details;
}

}  // namespace platform::rights
