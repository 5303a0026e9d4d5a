#include "platform/linux/qt/agreement/RtfFonts.h"

#include <QFont>
#include <QFontDatabase>
#include <QFontInfo>
#include <algorithm>
#include <array>

#include "platform/linux/qt/agreement/AgreementLiterals.h"

namespace platform::qt {

namespace {

constexpr std::array kFixed{"courier"_L1, "menlo"_L1,      "monaco"_L1, "consolas"_L1,
                            "mono"_L1,    "typewriter"_L1, "console"_L1};
constexpr std::array kSerif{"times"_L1,   "georgia"_L1,     "garamond"_L1,   "palatino"_L1, "cambria"_L1,
                            "bookman"_L1, "baskerville"_L1, "didot"_L1,      "hoefler"_L1,  "charter"_L1,
                            "roman"_L1,   "schoolbook"_L1,  "constantia"_L1, "minion"_L1,   "iowan"_L1};

template <std::size_t Count>
bool names(const QString& name, const std::array<QLatin1StringView, Count>& words) {
    return std::any_of(words.begin(), words.end(),
                       [&name](QLatin1StringView word) { return name.contains(word, Qt::CaseInsensitive); });
}

RtfFont::Family familyOf(const RtfFont& font) {
    if (names(font.name, kFixed)) {
        return RtfFont::Family::fixed;
    }
    if (names(font.name, kSerif)) {
        return RtfFont::Family::serif;
    }
    return font.family;
}

const QString& serifFamily() {
    static const QString family = [] {
        QFont serif;
        serif.setStyleHint(QFont::Serif);
        serif.setFamilies({QString("serif"_L1)});
        return QFontInfo(serif).family();
    }();
    return family;
}

// "Helvetica-BoldOblique" is a family and a style.
QString familyName(const QString& name) {
    const qsizetype dash = name.indexOf(u'-');
    return dash > 0 ? name.left(dash) : name;
}

}  // namespace

RtfHostFont hostFont(const RtfFont& font) {
    RtfHostFont result;
    const QString style = font.name.mid(familyName(font.name).size());
    result.bold = style.contains("Bold"_L1, Qt::CaseInsensitive) || style.contains("Heavy"_L1, Qt::CaseInsensitive);
    result.italic =
        style.contains("Italic"_L1, Qt::CaseInsensitive) || style.contains("Oblique"_L1, Qt::CaseInsensitive);
    result.fixed = familyOf(font) == RtfFont::Family::fixed;
    result.serif = familyOf(font) == RtfFont::Family::serif;
    const QString family = familyName(font.name);
    // A font of symbols would show other characters than the ones that were read.
    if (font.family != RtfFont::Family::symbol && QFontDatabase::hasFamily(family)) {
        result.families.append(family);
    }
    if (result.fixed) {
        result.families.append(QFontDatabase::systemFont(QFontDatabase::FixedFont).family());
    } else if (result.serif) {
        result.families.append(serifFamily());
    }
    return result;
}

}  // namespace platform::qt
