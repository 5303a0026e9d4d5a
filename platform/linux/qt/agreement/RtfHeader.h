// What stands at the head of rich text and is referred to from its body: settings, fonts, colours, lists.
#pragma once

#include <QString>
#include <array>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/linux/qt/agreement/RtfModel.h"

namespace platform::qt {

// The code page by which a font of symbols is known.
constexpr int kSymbolCodePage = 42;

// What holds for the whole of a text. Lengths in twips.
struct RtfSettings {
    int codePage = 1252;
    int defaultFont = 0;
    int tabDistance = 720;
    int paperWidth = 12240;
    int leftMargin = 1800;
    int rightMargin = 1800;

    // Whether the word is one of these settings.
    bool word(std::string_view word, std::optional<int> value);
    int textWidth() const;
};

class RtfFontTable {
public:
    explicit RtfFontTable(std::map<int, RtfFont>& fonts) : m_fonts(fonts) {}

    void word(std::string_view word, std::optional<int> value);
    void text(const QString& text);  // a font's name, ended by ";"

private:
    std::map<int, RtfFont>& m_fonts;
    int m_number = 0;
    bool m_named = true;  // what follows the ";" is no part of the name
};

class RtfColorTable {
public:
    explicit RtfColorTable(std::vector<QColor>& colors) : m_colors(colors) {}

    void word(std::string_view word, std::optional<int> value);
    void text(const QString& text);  // each ";" ends a colour

private:
    std::vector<QColor>& m_colors;
    QColor m_next;
};

// Numbers the paragraphs of lists. Only needed where the text does not carry the marks itself.
class RtfLists {
public:
    void word(std::string_view word, std::optional<int> value);
    void levelText(const QString& text);

    // Counts a paragraph of a list and gives its mark, such as "1.2." or a bullet; empty for an unknown list.
    QString nextMark(int list, int level);

private:
    static constexpr int kLevels = 9;
    struct Level {
        int format = 0;  // 0 decimal, 1/2 Roman, 3/4 letters, 23 bullet, 255 none
        int start = 1;
        QString text{};  // a length, then characters of which those below 9 stand for a level's number
    };
    struct List {
        std::vector<Level> levels{};
        std::array<int, kLevels> counts{};
    };

    std::map<int, List> m_lists;     // by identifier
    std::map<int, int> m_overrides;  // identifiers by number
    List m_reading;
    int m_readingOverride = 0;
};

}  // namespace platform::qt
