// What rich text says, apart from how it is written and from how it is shown. Lengths are in twips, of which 1440 make
// an inch.
#pragma once

#include <QByteArray>
#include <QColor>
#include <QList>
#include <QString>
#include <map>
#include <optional>
#include <variant>
#include <vector>

namespace platform::qt {

struct RtfCharacterStyle {
    int font = 0;  // number in the font table
    int halfPoints = 24;
    int color = 0;  // numbers in the colour table; 0: none
    int background = 0;
    int spacing = 0;  // between characters
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool strikeOut = false;
    bool hidden = false;
    enum class Script : char { none, superscript, subscript } script = Script::none;
    enum class Capitals : char { none, all, small } capitals = Capitals::none;
    friend bool operator==(const RtfCharacterStyle&, const RtfCharacterStyle&) = default;
};

struct RtfTab {
    enum class Kind { left, right, center, decimal };
    int position = 0;
    Kind kind = Kind::left;
};

struct RtfParagraphStyle {
    enum class Alignment { left, right, center, justified };
    Alignment alignment = Alignment::left;
    bool rightToLeft = false;
    int leftIndent = 0;
    int rightIndent = 0;
    int firstLineIndent = 0;  // from the left indent; negative hangs
    int spaceBefore = 0;
    int spaceAfter = 0;
    int lineSpacing = 0;             // 0: by the font; negative: exactly; positive: at least
    bool lineSpacingFactor = false;  // the line spacing counts in 240ths of a line
    int background = 0;              // number in the colour table
    bool ruleBelow = false;
    bool inTable = false;
    int list = 0;  // number of a list override; 0: none
    int listLevel = 0;
    QList<RtfTab> tabs{};
    RtfTab::Kind nextTab = RtfTab::Kind::left;
};

// A picture: its bytes, or the name of an attachment that holds them.
struct RtfPicture {
    QByteArray bytes{};
    QString attachment{};
    int width = 0;  // 0: its own
    int height = 0;
};

// A run of text in one style, or a picture.
struct RtfInline {
    QString text{};  // a tab is "\t", a line break U+2028
    RtfCharacterStyle style{};
    QString link{};    // an address, or "#" and the name of a bookmark
    QString anchor{};  // the name of a bookmark that begins here
    std::optional<RtfPicture> picture{};
};

struct RtfParagraph {
    RtfParagraphStyle style{};
    RtfCharacterStyle mark{};  // at its end; an empty paragraph is as high as that
    std::vector<RtfInline> inlines{};
};

struct RtfCellShape {
    int right = 0;  // its right edge, from the left margin
    int background = 0;
    bool lines = false;
    bool continuesAbove = false;  // merged with the cell above it
    bool continuesLeft = false;   // merged with the cell before it
    enum class Vertical { top, middle, bottom } vertical = Vertical::top;
};

struct RtfCell {
    RtfCellShape shape{};
    std::vector<RtfParagraph> paragraphs{};
};

struct RtfRow {
    int left = 0;
    std::vector<RtfCell> cells{};
};

struct RtfTable {
    std::vector<RtfRow> rows{};
};

using RtfBlock = std::variant<RtfParagraph, RtfTable>;

struct RtfFont {
    enum class Family { unknown, serif, sans, fixed, script, symbol };
    QString name{};
    Family family = Family::unknown;
    int codePage = 0;  // 0: the document's own
};

struct RtfDocument {
    std::vector<RtfBlock> blocks{};
    std::map<int, RtfFont> fonts{};
    std::vector<QColor> colors{};  // an invalid one stands for the reader's own
    int textWidth = 9360;
    int tabDistance = 720;
    bool complete = true;  // false when it was too long to be read whole
};

}  // namespace platform::qt
