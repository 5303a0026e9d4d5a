#include "platform/linux/qt/agreement/RtfStyles.h"

#include <algorithm>
#include <unordered_map>

namespace platform::qt {

namespace {

using Value = std::optional<int>;

template <typename Style>
using Words = std::unordered_map<std::string_view, void (*)(Style&, Value)>;

bool isOn(Value value) { return value.value_or(1) != 0; }

// Lengths that a page could have; what lies beyond is a mistake or mischief.
int length(Value value) {
    constexpr int most = 31680;
    return std::clamp(value.value_or(0), -most, most);
}

int tableIndex(Value value) { return std::max(value.value_or(0), 0); }

void setScript(RtfCharacterStyle& style, RtfCharacterStyle::Script script, bool on) {
    style.script = on ? script : RtfCharacterStyle::Script::none;
}

const Words<RtfCharacterStyle>& characterWords() {
    using Style = RtfCharacterStyle;
    static const Words<Style> words{
        {"b", [](Style& s, Value v) { s.bold = isOn(v); }},
        {"i", [](Style& s, Value v) { s.italic = isOn(v); }},
        {"strike", [](Style& s, Value v) { s.strikeOut = isOn(v); }},
        {"striked", [](Style& s, Value v) { s.strikeOut = isOn(v); }},
        {"v", [](Style& s, Value v) { s.hidden = isOn(v); }},
        {"deleted", [](Style& s, Value v) { s.hidden = isOn(v); }},
        {"f", [](Style& s, Value v) { s.font = v.value_or(0); }},
        {"fs", [](Style& s, Value v) { s.halfPoints = std::clamp(v.value_or(24), 1, 3276); }},
        {"cf", [](Style& s, Value v) { s.color = tableIndex(v); }},
        {"cb", [](Style& s, Value v) { s.background = tableIndex(v); }},
        {"highlight", [](Style& s, Value v) { s.background = tableIndex(v); }},
        {"chcbpat", [](Style& s, Value v) { s.background = tableIndex(v); }},
        {"expndtw", [](Style& s, Value v) { s.spacing = std::clamp(v.value_or(0), -40, 400); }},
        {"super", [](Style& s, Value v) { setScript(s, Style::Script::superscript, isOn(v)); }},
        {"sub", [](Style& s, Value v) { setScript(s, Style::Script::subscript, isOn(v)); }},
        {"nosupersub", [](Style& s, Value /*v*/) { s.script = Style::Script::none; }},
        {"up", [](Style& s, Value v) { setScript(s, Style::Script::superscript, v.value_or(6) > 0); }},
        {"dn", [](Style& s, Value v) { setScript(s, Style::Script::subscript, v.value_or(6) > 0); }},
        {"caps", [](Style& s, Value v) { s.capitals = isOn(v) ? Style::Capitals::all : Style::Capitals::none; }},
        {"scaps", [](Style& s, Value v) { s.capitals = isOn(v) ? Style::Capitals::small : Style::Capitals::none; }},
        {"ulnone", [](Style& s, Value /*v*/) { s.underline = false; }},
        {"ulc", [](Style& /*s*/, Value /*v*/) {}},
    };
    return words;
}

void addTab(RtfParagraphStyle& style, Value position) {
    constexpr qsizetype most = 64;
    if (position && style.tabs.size() < most) {
        style.tabs.append({length(position), style.nextTab});
    }
    style.nextTab = RtfTab::Kind::left;
}

const Words<RtfParagraphStyle>& paragraphWords() {
    using Style = RtfParagraphStyle;
    using Alignment = RtfParagraphStyle::Alignment;
    static const Words<Style> words{
        {"pard", [](Style& s, Value /*v*/) { s = {}; }},
        {"ql", [](Style& s, Value /*v*/) { s.alignment = Alignment::left; }},
        {"qr", [](Style& s, Value /*v*/) { s.alignment = Alignment::right; }},
        {"qc", [](Style& s, Value /*v*/) { s.alignment = Alignment::center; }},
        {"qj", [](Style& s, Value /*v*/) { s.alignment = Alignment::justified; }},
        {"rtlpar", [](Style& s, Value /*v*/) { s.rightToLeft = true; }},
        {"ltrpar", [](Style& s, Value /*v*/) { s.rightToLeft = false; }},
        {"li", [](Style& s, Value v) { s.leftIndent = length(v); }},
        {"lin", [](Style& s, Value v) { s.leftIndent = length(v); }},
        {"ri", [](Style& s, Value v) { s.rightIndent = length(v); }},
        {"rin", [](Style& s, Value v) { s.rightIndent = length(v); }},
        {"fi", [](Style& s, Value v) { s.firstLineIndent = length(v); }},
        {"sb", [](Style& s, Value v) { s.spaceBefore = std::max(length(v), 0); }},
        {"sa", [](Style& s, Value v) { s.spaceAfter = std::max(length(v), 0); }},
        {"sl", [](Style& s, Value v) { s.lineSpacing = length(v); }},
        {"slmult", [](Style& s, Value v) { s.lineSpacingFactor = isOn(v); }},
        {"tx", addTab},
        {"tqr", [](Style& s, Value /*v*/) { s.nextTab = RtfTab::Kind::right; }},
        {"tqc", [](Style& s, Value /*v*/) { s.nextTab = RtfTab::Kind::center; }},
        {"tqdec", [](Style& s, Value /*v*/) { s.nextTab = RtfTab::Kind::decimal; }},
        {"cbpat", [](Style& s, Value v) { s.background = tableIndex(v); }},
        {"intbl", [](Style& s, Value /*v*/) { s.inTable = true; }},
        {"ls", [](Style& s, Value v) { s.list = tableIndex(v); }},
        {"ilvl", [](Style& s, Value v) { s.listLevel = std::clamp(v.value_or(0), 0, 8); }},
    };
    return words;
}

template <typename Style>
bool apply(const Words<Style>& words, Style& style, std::string_view word, Value value) {
    const auto found = words.find(word);
    if (found == words.end()) {
        return false;
    }
    found->second(style, value);
    return true;
}

}  // namespace

bool applyCharacterWord(RtfCharacterStyle& style, std::string_view word, std::optional<int> value) {
    if (word == "plain") {
        style = {};
        return true;
    }
    if (apply(characterWords(), style, word, value)) {
        return true;
    }
    // The many kinds of line (dotted, double, wave, ...) are one line here.
    if (word.starts_with("ul") && word.size() <= 8) {
        style.underline = isOn(value);
        return true;
    }
    return false;
}

bool applyParagraphWord(RtfParagraphStyle& style, std::string_view word, std::optional<int> value) {
    return apply(paragraphWords(), style, word, value);
}

QChar characterOfWord(std::string_view word) {
    static const std::unordered_map<std::string_view, char16_t> words{
        {"tab", u'\t'},         {"line", u'\u2028'},    {"emdash", u'—'},       {"endash", u'–'},
        {"bullet", u'•'},       {"lquote", u'‘'},       {"rquote", u'’'},       {"ldblquote", u'“'},
        {"rdblquote", u'”'},    {"emspace", u'\u2003'}, {"enspace", u'\u2002'}, {"qmspace", u'\u2005'},
        {"zwj", u'\u200D'},     {"zwnj", u'\u200C'},    {"zwbo", u'\u200B'},    {"zwnbo", u'\u2060'},
        {"ltrmark", u'\u200E'}, {"rtlmark", u'\u200F'},
    };
    const auto found = words.find(word);
    return found == words.end() ? QChar() : QChar(found->second);
}

}  // namespace platform::qt
