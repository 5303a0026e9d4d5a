#include <QColor>
#include <QPalette>
#include <algorithm>
#include <array>
#include <cmath>

#include "platform/linux/qt/agreement/AgreementDocument.h"
#include "platform/linux/qt/agreement/AgreementFormats.h"

namespace platform::qt {

namespace {

constexpr double kReadable = 4.5;

double linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& one, const QColor& other) {
    const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
    return (light + 0.05) / (dark + 0.05);
}

QColor mixed(const QColor& below, const QColor& above, double share) {
    const auto channel = [share](float from, float to) { return static_cast<float>(from + (to - from) * share); };
    return QColor::fromRgbF(channel(below.redF(), above.redF()), channel(below.greenF(), above.greenF()),
                            channel(below.blueF(), above.blueF()));
}

// The palette's link colour, moved towards black or white no further than it must be.
QColor readableLink(const QPalette& palette) {
    const QColor base = palette.color(QPalette::Base);
    const QColor link = palette.color(QPalette::Link);
    const QColor black(Qt::black);
    const QColor white(Qt::white);
    const QColor& target = contrast(black, base) > contrast(white, base) ? black : white;
    for (int step = 0; step <= 20; ++step) {
        const QColor candidate = mixed(link, target, step / 20.0);
        if (contrast(candidate, base) >= kReadable) {
            return candidate;
        }
    }
    return target;
}

class Recoloring {
public:
    Recoloring(QTextDocument& document, const QPalette& palette)
        : m_document(document),
          m_base(palette.color(QPalette::Base)),
          m_text(palette.color(QPalette::Text)),
          m_link(readableLink(palette)),
          m_line(mixed(m_base, m_text, 0.35)) {}

    void run() {
        QTextCursor edit(&m_document);
        edit.beginEditBlock();
        changeFrames(
            *m_document.rootFrame(),
            [this](QTextFrameFormat& format) {
                dropUnreadableBackground(format);
                if (format.border() > 0) {
                    format.setBorderBrush(m_line);
                }
            },
            [this](QTextCharFormat& format) {
                dropUnreadableBackground(format);
                recolorCellLines(format);
            });
        changeParagraphs(m_document, [this](QTextBlockFormat& format) { dropUnreadableBackground(format); });
        changeText(m_document, [this](QTextCharFormat& format) { recolorText(format); });
        edit.endEditBlock();
    }

private:
    void recolorCellLines(QTextCharFormat& format) const {
        static constexpr std::array lines{QTextFormat::TableCellTopBorderBrush, QTextFormat::TableCellBottomBorderBrush,
                                          QTextFormat::TableCellLeftBorderBrush,
                                          QTextFormat::TableCellRightBorderBrush};
        for (const auto line : lines) {
            if (format.hasProperty(line)) {
                format.setProperty(line, QBrush(m_line));
            }
        }
    }

    void recolorText(QTextCharFormat& format) const {
        format.clearForeground();
        format.clearProperty(QTextFormat::TextOutline);
        format.clearProperty(QTextFormat::TextUnderlineColor);
        if (format.isAnchor() && !format.anchorHref().isEmpty()) {
            format.setForeground(m_link);
            format.setFontUnderline(true);
        }
        dropUnreadableBackground(format);
    }

    template <typename Format>
    void dropUnreadableBackground(Format& format) const {
        if (!format.hasProperty(QTextFormat::BackgroundBrush)) {
            return;
        }
        const QBrush brush = format.background();
        const QColor shown = mixed(m_base, brush.color(), brush.color().alphaF());
        const bool readable = brush.style() == Qt::SolidPattern && contrast(m_text, shown) >= kReadable &&
                              contrast(m_link, shown) >= kReadable;
        if (!readable && brush.style() != Qt::NoBrush) {
            format.clearBackground();
        }
    }

    QTextDocument& m_document;
    QColor m_base;
    QColor m_text;
    QColor m_link;
    QColor m_line;
};

}  // namespace

void applyStandardTextColor(QTextDocument& document, const QPalette& palette) { Recoloring(document, palette).run(); }

}  // namespace platform::qt
