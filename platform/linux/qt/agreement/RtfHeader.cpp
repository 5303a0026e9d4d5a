#include "platform/linux/qt/agreement/RtfHeader.h"

#include <algorithm>

#include "platform/linux/qt/agreement/AgreementLiterals.h"
#include "platform/linux/qt/agreement/RtfCharset.h"

namespace platform::qt {

namespace {

constexpr std::size_t kMostEntries = 4096;

QString roman(int number) {
    struct Step {
        int value;
        QLatin1String text;
    };
    static constexpr std::array steps{Step{1000, "m"_L1}, Step{900, "cm"_L1}, Step{500, "d"_L1}, Step{400, "cd"_L1},
                                      Step{100, "c"_L1},  Step{90, "xc"_L1},  Step{50, "l"_L1},  Step{40, "xl"_L1},
                                      Step{10, "x"_L1},   Step{9, "ix"_L1},   Step{5, "v"_L1},   Step{4, "iv"_L1},
                                      Step{1, "i"_L1}};
    QString text;
    for (const Step& step : steps) {
        for (; number >= step.value; number -= step.value) {
            text += step.text;
        }
    }
    return text;
}

// a to z, then aa, bb and so on.
QString letters(int number) {
    constexpr int alphabet = 26;
    return QString((number - 1) / alphabet + 1, QChar(u'a' + (number - 1) % alphabet));
}

QString numberText(int format, int number) {
    if (number < 1 || number > 3999) {
        return QString::number(number);
    }
    switch (format) {
        case 1:
            return roman(number).toUpper();
        case 2:
            return roman(number);
        case 3:
            return letters(number).toUpper();
        case 4:
            return letters(number);
        case 255:
            return {};
        default:
            return QString::number(number);
    }
}

}  // namespace

bool RtfSettings::word(std::string_view word, std::optional<int> value) {
    const int number = value.value_or(0);
    if (word == "ansicpg") {
        codePage = number > 0 ? number : codePage;
    } else if (word == "mac") {
        codePage = 10000;
    } else if (word == "pc") {
        codePage = 437;
    } else if (word == "pca") {
        codePage = 850;
    } else if (word == "deff") {
        defaultFont = number;
    } else if (word == "deftab" || word == "pardeftab") {
        tabDistance = std::clamp(number, 144, 2880);
    } else if (word == "paperw") {
        paperWidth = std::clamp(number, 2880, 31680);
    } else if (word == "margl") {
        leftMargin = std::clamp(number, 0, 31680);
    } else if (word == "margr") {
        rightMargin = std::clamp(number, 0, 31680);
    } else {
        return false;
    }
    return true;
}

int RtfSettings::textWidth() const { return std::max(paperWidth - leftMargin - rightMargin, 1440); }

void RtfFontTable::word(std::string_view word, std::optional<int> value) {
    if (word == "f") {
        m_number = value.value_or(0);
        m_named = m_fonts.size() >= kMostEntries && !m_fonts.contains(m_number);
        if (!m_named) {
            m_fonts[m_number] = {};
        }
        return;
    }
    const auto font = m_fonts.find(m_number);
    if (m_named || font == m_fonts.end()) {
        return;
    }
    static const std::map<std::string_view, RtfFont::Family> families{
        {"froman", RtfFont::Family::serif},   {"fswiss", RtfFont::Family::sans}, {"fmodern", RtfFont::Family::fixed},
        {"fscript", RtfFont::Family::script}, {"fdecor", RtfFont::Family::sans}, {"ftech", RtfFont::Family::symbol}};
    if (const auto family = families.find(word); family != families.end()) {
        font->second.family = family->second;
    } else if (word == "fcharset") {
        font->second.codePage = value == 2 ? kSymbolCodePage : codePageOfFontCharset(value.value_or(0));
    } else if (word == "cpg") {
        font->second.codePage = std::max(value.value_or(0), 0);
    }
}

void RtfFontTable::text(const QString& text) {
    constexpr qsizetype longest = 128;
    const auto font = m_fonts.find(m_number);
    if (m_named || font == m_fonts.end()) {
        return;
    }
    const qsizetype end = text.indexOf(u';');
    QString& name = font->second.name;
    name = (name + text.left(end)).left(longest);
    m_named = end >= 0;
}

void RtfColorTable::word(std::string_view word, std::optional<int> value) {
    if (word != "red" && word != "green" && word != "blue") {
        return;
    }
    const int channel = std::clamp(value.value_or(0), 0, 255);
    if (!m_next.isValid()) {
        m_next = QColor(Qt::black);
    }
    if (word == "red") {
        m_next.setRed(channel);
    } else if (word == "green") {
        m_next.setGreen(channel);
    } else {
        m_next.setBlue(channel);
    }
}

void RtfColorTable::text(const QString& text) {
    for (const QChar character : text) {
        if (character == u';' && m_colors.size() < kMostEntries) {
            m_colors.push_back(m_next);
            m_next = QColor();
        }
    }
}

void RtfLists::word(std::string_view word, std::optional<int> value) {
    if (word == "list") {
        m_reading = {};
    } else if (word == "listlevel") {
        if (m_reading.levels.size() < kLevels) {
            m_reading.levels.emplace_back();
        }
    } else if (word == "listid") {
        const int identifier = value.value_or(0);
        if (!m_reading.levels.empty() && m_lists.size() < kMostEntries) {
            m_lists[identifier] = std::exchange(m_reading, {});
        }
        m_readingOverride = identifier;
    } else if (word == "ls") {
        if (m_overrides.size() < kMostEntries) {
            m_overrides[value.value_or(0)] = m_readingOverride;
        }
    } else if (!m_reading.levels.empty()) {
        if (word == "levelnfc" || word == "levelnfcn") {
            m_reading.levels.back().format = value.value_or(0);
        } else if (word == "levelstartat") {
            m_reading.levels.back().start = value.value_or(1);
        }
    }
}

void RtfLists::levelText(const QString& text) {
    constexpr qsizetype longest = 64;
    if (!m_reading.levels.empty()) {
        QString& whole = m_reading.levels.back().text;
        whole = (whole + text).left(longest);
    }
}

QString RtfLists::nextMark(int list, int level) {
    const auto identifier = m_overrides.find(list);
    const auto found = identifier == m_overrides.end() ? m_lists.end() : m_lists.find(identifier->second);
    if (found == m_lists.end() || static_cast<std::size_t>(level) >= found->second.levels.size()) {
        return {};
    }
    List& reading = found->second;
    ++reading.counts.at(static_cast<std::size_t>(level));
    std::fill(reading.counts.begin() + level + 1, reading.counts.end(), 0);

    QString mark;
    const QString& text = reading.levels.at(static_cast<std::size_t>(level)).text;
    const qsizetype length = text.isEmpty() ? 0 : text.front().unicode();
    for (const QChar character : text.mid(1, length)) {
        const std::size_t place = character.unicode();
        if (place >= reading.levels.size() || place >= kLevels) {
            mark += character;
            continue;
        }
        const Level& numbered = reading.levels.at(place);
        const qint64 number = qint64{numbered.start} + std::max(reading.counts.at(place), 1) - 1;
        mark += numberText(numbered.format, static_cast<int>(std::clamp<qint64>(number, -1'000'000, 1'000'000)));
    }
    return mark;
}

}  // namespace platform::qt
