#include "tools/wickfield-bundle/check/ShellScriptCheck.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "lib/base/Text.h"
#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/check/BashFeatures.h"
#include "tools/wickfield-bundle/check/TimedRun.h"

namespace wickfield_bundle {

namespace {

constexpr std::size_t mostText = std::size_t{1} << 20U;  // that is looked at
constexpr std::size_t longestMessage = 200;              // bytes
constexpr std::chrono::seconds longestParsing{10};
constexpr const char* interpreter = "/bin/bash";
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

std::string_view firstLine(std::string_view text) { return text.substr(0, std::min(text.find('\n'), text.size())); }

std::vector<std::string_view> words(std::string_view line) {
    std::vector<std::string_view> words;
    while (true) {
        line.remove_prefix(std::min(line.find_first_not_of(" \t\r"), line.size()));
        if (line.empty()) {
            return words;
        }
        const std::size_t end = std::min(line.find_first_of(" \t\r"), line.size());
        words.push_back(line.substr(0, end));
        line.remove_prefix(end);
    }
}

// What the first line asks for.
struct Asked {
    std::string_view interpreter;  // "" when it asks for none
    std::string_view option;       // the first that the interpreter is to be given
};

Asked askedFor(std::string_view text) {
    if (text.starts_with(byteOrderMark)) {
        text.remove_prefix(byteOrderMark.size());
    }
    if (!text.starts_with("#!")) {
        return {};
    }
    const auto parts = words(firstLine(text).substr(2));
    auto named = parts.begin();
    if (named != parts.end() && named->ends_with("/env")) {
        named = std::find_if(named + 1, parts.end(), [](std::string_view part) {
            return !part.starts_with('-') && part.find('=') == std::string_view::npos;
        });
    }
    if (named == parts.end()) {
        return {};
    }
    const auto next = named + 1;
    const bool hasOption = next != parts.end() && next->starts_with('-') && *next != "-" && *next != "--";
    return {.interpreter = *named, .option = hasOption ? *next : ""};
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const kz::DecodedCharacter character = kz::decodeCharacter(text);
        if (!character.valid) {
            return false;
        }
        text.remove_prefix(character.bytes);
    }
    return true;
}

bool doesNothing(std::string_view text) {
    while (!text.empty()) {
        const std::string_view line = firstLine(text);
        const auto begin = std::ranges::find_if_not(line, isBlank);
        if (begin != line.end() && *begin != '#') {
            return false;
        }
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return true;
}

class ShellScriptCheck {
public:
    using Report = std::function<void(RuleName, std::string)>;

    ShellScriptCheck(const std::string& path, const RegularFile& file, const Report& report)
        : m_path(path), m_file(file), m_report(report), m_text(file.head(mostText)) {}

    void run() {
        if (isWhole() && doesNothing(m_text)) {
            m_report("script-empty", "It has nothing but comments.");
            return;
        }
        checkEncoding();
        const bool isForBash = checkInterpreter();
        if (m_file.tail(1) != "\n") {
            m_report("script-line-end", "Its last line is not ended.");
        }
        if (hasWindowsLineEnds() || !isForBash) {
            return;  // what bash makes of these would only repeat it
        }
        if (const auto newer = newerBashFeature(m_text)) {
            m_report("script-bash-4", "Line " + std::to_string(newer->line) + " has \"" + newer->feature + "\".");
        }
        parse();
    }

private:
    bool isWhole() const { return m_file.size() <= m_text.size(); }

    void checkEncoding() {
        if (m_text.starts_with(byteOrderMark)) {
            m_report("script-encoding", "It begins with a byte-order mark, so that bash does not know its first line.");
        } else if (isWhole() && !isUtf8(m_text)) {
            m_report("script-encoding", "It has bytes that are not UTF-8.");
        }
    }

    bool checkInterpreter() {
        constexpr std::array<std::string_view, 2> fitting{"bash", "sh"};
        constexpr std::array<std::string_view, 6> shells{"zsh", "ksh", "dash", "ash", "mksh", "rbash"};
        const auto [asked, option] = askedFor(m_text);
        const std::string_view name = asked.substr(asked.rfind('/') + 1);
        const bool isOwn = asked.starts_with("/usr/local/") || asked.starts_with("/opt/");
        const std::string reason = "It asks for " + std::string(asked.substr(0, longestMessage)) + ".";
        if (asked.empty() || (std::ranges::find(fitting, name) != fitting.end() && !isOwn)) {
            if (!option.empty()) {
                m_report("script-options", "It asks for " + std::string(option.substr(0, longestMessage)) + ".");
            }
            return true;
        }
        if (isOwn || std::ranges::find(shells, name) != shells.end()) {
            m_report("script-shell", reason);
            return true;
        }
        m_report("script-language", reason);
        return false;
    }

    bool hasWindowsLineEnds() {
        const auto first = m_text.find("\r\n");
        if (first == std::string::npos) {
            return false;
        }
        const auto line = 1 + std::count(m_text.begin(), m_text.begin() + static_cast<std::ptrdiff_t>(first), '\n');
        m_report("script-crlf", "The first line that ends so is line " + std::to_string(line) + ".");
        return true;
    }

    void parse() {
        if (!isWhole()) {
            m_report("not-checked", "It has more than 1 MiB and was not parsed.");
            return;
        }
        auto& processes = *platform::host().processes;
        TimedRun bash({.path = processes.locateTool(interpreter),
                       .arguments = {"--norc", "--noprofile", "-n", "--", m_path},
                       .environment = std::map<std::string, std::string>{{"PATH", "/usr/bin:/bin"}, {"LC_ALL", "C"}},
                       .input = platform::ProcessOptions::Input::null,
                       .output = platform::ProcessOptions::Output::null,
                       .error = platform::ProcessOptions::Output::pipe},
                      longestParsing);
        const TimedRun::Result result = bash.finish();
        if (!result.started) {
            m_report("not-checked", "It was not parsed, for want of /bin/bash.");
        } else if (result.timedOut) {
            m_report("not-checked", "bash did not parse it within ten seconds.");
        } else if (result.status != 0 || !result.error.empty()) {  // a here-document without an end is a mere warning
            m_report("script-syntax", "bash says: " + message(result.error));
        }
    }

    // The first line, without the script's own name in front.
    std::string message(const std::string& error) const {
        std::string_view line = firstLine(error);
        if (line.starts_with(m_path + ": ")) {
            line.remove_prefix(m_path.size() + 2);
        }
        return std::string(line.substr(0, longestMessage));
    }

    const std::string& m_path;
    const RegularFile& m_file;
    const Report& m_report;
    const std::string m_text;
};

}  // namespace

void checkShellScript(const std::string& path, const RegularFile& file,
                      const std::function<void(RuleName, std::string reason)>& report) {
    ShellScriptCheck(path, file, report).run();
}

}  // namespace wickfield_bundle
