#include "platform/linux/qt/ElidedLabel.h"

#include <QEvent>
#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>
#include <algorithm>

namespace platform::qt {

namespace {

constexpr int longestLine = 4096;     // characters that are kept
constexpr int longestToolTip = 2000;  // characters

}  // namespace

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void ElidedLabel::setPlainText(const QString& text) {
    QString line = text.left(longestLine);
    for (QChar& character : line) {
        if (character.category() == QChar::Other_Control || character == QChar::LineSeparator ||
            character == QChar::ParagraphSeparator) {
            character = u' ';
        }
    }
    setText(line);
    setAccessibleName(line);
}

QString ElidedLabel::shownText() const {
    return fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width());
}

void ElidedLabel::setKeptCharacters(int count) {
    m_keptCharacters = count;
    updateGeometry();
}

QSize ElidedLabel::sizeHint() const {
    const auto metrics = fontMetrics();
    return {metrics.horizontalAdvance(text()) + 1, metrics.height()};
}

QSize ElidedLabel::minimumSizeHint() const {
    const auto metrics = fontMetrics();
    const int kept = metrics.averageCharWidth() * m_keptCharacters + metrics.horizontalAdvance(QChar(0x2026));
    return {std::min(kept, sizeHint().width()), metrics.height()};
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    style()->drawItemText(&painter, contentsRect(), Qt::AlignLeading | Qt::AlignVCenter | Qt::TextSingleLine, palette(),
                          isEnabled(), shownText(), foregroundRole());
}

bool ElidedLabel::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        if (shownText() == text()) {
            QToolTip::hideText();
            event->ignore();
        } else {
            // As rich text, so that a long name wraps instead of leaving the screen.
            QToolTip::showText(help->globalPos(),
                               QString::fromLatin1("<qt>%1</qt>").arg(text().left(longestToolTip).toHtmlEscaped()),
                               this);
        }
        return true;
    }
    return QLabel::event(event);
}

}  // namespace platform::qt
