#include "tools/wickfield-bundle/check/AgreementRules.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "lib/base/PathText.h"
#include "lib/base/Text.h"
#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/check/HtmlReferences.h"
#include "tools/wickfield-bundle/check/RegularFile.h"
#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {

namespace {

constexpr std::size_t mostText = std::size_t{4} << 20U;  // bytes that are looked at

enum class Kind { plainText, html, richText, notText };

bool hasByteOrderMark(std::string_view text) {
    return text.starts_with("\xEF\xBB\xBF") || text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF");
}

// As the readers of both hosts tell them: pages by the name too, the others by what they begin with alone.
Kind kindOf(const std::string& path, std::string_view text) {
    constexpr std::array<std::string_view, 3> pages{"html", "htm", "xhtml"};
    const std::string extension = kz::lowercased(kz::pathExtension(path));
    const std::string opening = kz::lowercased(text.substr(0, std::min<std::size_t>(text.size(), 64)));
    const auto opens = opening.find_first_not_of(" \t\r\n");
    const std::string_view start = opens == std::string::npos ? "" : std::string_view(opening).substr(opens);
    if (std::ranges::find(pages, extension) != pages.end()) {
        return Kind::html;
    }
    if (start.starts_with("{\\rtf")) {
        return Kind::richText;
    }
    if (start.starts_with("<!doctype html") || start.starts_with("<html")) {
        return Kind::html;
    }
    const bool isBinary = text.find('\0') != std::string_view::npos && !hasByteOrderMark(text);
    return isBinary || text.starts_with("%PDF") ? Kind::notText : Kind::plainText;
}

class AgreementRules {
public:
    AgreementRules(const std::string& path, const std::string& place, Findings& findings)
        : m_path(path), m_place(place), m_findings(findings) {}

    void checkFile() {
        std::string whyNot;
        const auto file = RegularFile::open(m_path, whyNot);
        if (!file) {
            return;  // a folder with a text in it, or what cannot be read at all
        }
        m_text = file->head(mostText);
        m_isWhole = file->size() <= m_text.size();
        m_kind = kindOf(m_path, m_text);
        if (m_kind == Kind::notText) {
            report("agreement-kind", m_text.starts_with("%PDF") ? "It is a PDF." : "It is no text.");
        } else {
            checkEncoding();
            checkExtension();
        }
        if (m_kind == Kind::html) {
            checkReferences();
        }
    }

    void checkReading(const MediaReport& reading) {
        switch (reading.outcome) {
            case MediaReport::Outcome::notChecked:
                report("not-checked", "It was not read as the window does it: " + reading.reason + ".");
                break;
            case MediaReport::Outcome::refused:
                report("agreement-unreadable", "It cannot be read: " + reading.reason + ".");
                break;
            case MediaReport::Outcome::read:
                checkLength(reading);
                break;
        }
    }

private:
    void report(RuleName rule, std::string reason) { add(m_findings, rule, m_place, std::move(reason)); }

    void checkLength(const MediaReport& reading) {
        if (!reading.isComplete && m_kind != Kind::notText) {
            report("agreement-cut", "The window shows the first " + std::to_string(reading.characters) +
                                        " characters, blanks not counted.");
        } else if (reading.characters == 0 && reading.pictures == 0) {
            report("agreement-empty", "It has no text.");
        }
    }

    void checkEncoding() {
        if (hasByteOrderMark(m_text)) {
            return;
        }
        if (m_kind == Kind::plainText && m_isWhole && !kz::isUTF8(m_text)) {
            report("agreement-encoding", "It has bytes that are not UTF-8.");
        } else if (m_kind == Kind::html && !kz::isASCII(m_text) && !namesCharset(m_text)) {
            report("agreement-encoding", "It has letters beyond ASCII but does not name its charset.");
        }
    }

    // "EULA 1.0" has none.
    void checkExtension() {
        const std::string extension = kz::lowercased(kz::pathExtension(m_path));
        const bool isWord = std::ranges::any_of(extension, [](char c) { return c < '0' || c > '9'; });
        if (m_kind == Kind::plainText && isWord && extension != "txt" && extension != "text") {
            report("agreement-extension", "Its name ends in ." + extension + ", but it is shown as plain text.");
        }
    }

    void checkReferences() {
        const HtmlReferences references = referencesOf(m_text);
        if (!references.remote.empty()) {
            report("agreement-remote", "It refers to " + references.remote.front() + ".");
        }
        const std::string folder = kz::deletingLastPathComponent(m_path);
        for (const std::string& name : references.pictures) {
            if (!platform::host().files->fileExists(kz::appendPathComponent(folder, name))) {
                report("agreement-picture-missing", "It shows \"" + name + "\", which is not there.");
            }
        }
    }

    const std::string& m_path;
    const std::string& m_place;
    Findings& m_findings;
    std::string m_text;
    bool m_isWhole = true;
    Kind m_kind = Kind::richText;
};

}  // namespace

void checkAgreement(const std::string& path, const std::string& place, const MediaReport& report, Findings& findings) {
    AgreementRules rules(path, place, findings);
    rules.checkFile();
    rules.checkReading(report);
}

}  // namespace wickfield_bundle
