#include "platform/linux/qt/LinkLabel.h"

#include <QEvent>
#include <QFocusEvent>

#include "platform/linux/qt/OpenLink.h"
#include "platform/linux/qt/QtText.h"

namespace platform::qt {

QString htmlOf(const AttributedString& runs, const QPalette& palette) {
    const QString blue = palette.color(QPalette::Link).name();
    QString html;
    for (const TextRun& run : runs) {
        QString style;
        if (run.color == TextColor::blue) {
            style += QString::fromLatin1("color:%1;").arg(blue);
        }
        style += QString::fromLatin1(run.underline == UnderlineStyle::single ? "text-decoration:underline;"
                                                                             : "text-decoration:none;");
        const QString text = toQt(run.text).toHtmlEscaped();
        html += run.link ? QString::fromLatin1("<a href=\"%1\" style=\"%2\">%3</a>")
                               .arg(toQt(*run.link).toHtmlEscaped(), style, text)
                         : QString::fromLatin1("<span style=\"%1\">%2</span>").arg(style, text);
    }
    return html;
}

LinkLabel::LinkLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::RichText);
    setWordWrap(true);
    connect(this, &QLabel::linkActivated, this, [](const QString& address) { openLink(address); });
}

void LinkLabel::setRuns(const AttributedString& runs) {
    m_runs = runs;
    rebuild();
}

QString LinkLabel::plainText() const {
    QString text;
    for (const TextRun& run : m_runs) {
        text += toQt(run.text);
    }
    return text;
}

QSize LinkLabel::minimumSizeHint() const {
    const auto metrics = fontMetrics();
    return {metrics.averageCharWidth() * 14, metrics.height()};
}

void LinkLabel::rebuild() {
    setText(htmlOf(m_runs, palette()));
    setAccessibleName(plainText());
}

void LinkLabel::focusInEvent(QFocusEvent* event) {
    QLabel::focusInEvent(event);
    // The link itself, not the text around it, is what Tab looks for.
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason) {
        focusNextPrevChild(event->reason() == Qt::TabFocusReason);
    }
}

void LinkLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && !m_runs.empty()) {
        rebuild();
    }
}

}  // namespace platform::qt
