#include "platform/linux/qt/AlertView.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <variant>

#include "platform/linux/qt/AlertIcon.h"
#include "platform/linux/qt/ProminentButton.h"
#include "platform/linux/qt/QtText.h"
#include "platform/linux/qt/TextScroller.h"
#include "platform/ports/Host.h"

namespace platform::qt {

namespace {

constexpr int textWidth = 340;
constexpr int margin = 20;
constexpr int gap = 12;
constexpr qsizetype longestText = 20000;  // characters; an alert is no place for more

QLabel* makeText(const std::string& text) {
    auto* label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setText(toQt(text).left(longestText));
    label->setAccessibleName(label->text());
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignLeading | Qt::AlignTop);
    return label;
}

bool booleanOf(const PropertyValue& value) {
    if (const auto* flag = value.as<bool>()) {
        return *flag;
    }
    if (const auto* number = value.as<std::int64_t>()) {
        return *number != 0;
    }
    return false;
}

}  // namespace

AlertView::AlertView(const AlertContents& contents, std::function<void(long)> answered)
    : m_answered(std::move(answered)) {
    setWindowTitle(toQt(contents.messageText));
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(margin, margin, margin, margin);
    outer->setSpacing(gap);

    auto* top = new QHBoxLayout;
    top->setSpacing(16);
    auto* icon = new AlertIcon;
    top->addWidget(icon, 0, Qt::AlignTop);
    auto* column = new QVBoxLayout;
    column->setSpacing(gap);
    column->addWidget(makeTexts(contents));
    if (contents.suppressionKey) {
        addSuppression(*column, *contents.suppressionKey);
    }
    top->addLayout(column, 1);
    outer->addLayout(top, 1);

    m_row = new QBoxLayout(QBoxLayout::LeftToRight);
    m_row->setSpacing(6);
    outer->addLayout(m_row);
    addButtons(contents);
}

QWidget* AlertView::makeTexts(const AlertContents& contents) {
    auto* texts = new QWidget;
    auto* layout = new QVBoxLayout(texts);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    auto* title = makeText(contents.messageText);
    QFont bold = title->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.1);
    title->setFont(bold);
    layout->addWidget(title);
    if (!contents.informativeText.empty()) {
        layout->addWidget(makeText(contents.informativeText));
    }
    layout->addStretch(1);
    return new TextScroller(texts, textWidth);
}

void AlertView::addSuppression(QBoxLayout& column, const std::string& key) {
    m_suppression = new QCheckBox(tr("Do not show this message again"));
    auto* defaults = host().defaults;
    if (defaults != nullptr) {
        if (const auto present = defaults->value(key)) {
            m_suppression->setChecked(booleanOf(*present));
        }
    }
    connect(m_suppression, &QCheckBox::toggled, this, [key](bool checked) {
        if (auto* service = host().defaults) {
            service->setValue(key, PropertyValue{checked});
        }
    });
    column.addWidget(m_suppression);
}

void AlertView::addButtons(const AlertContents& contents) {
    if (contents.otherButton) {
        m_other = addButton(new QPushButton, toQt(*contents.otherButton), -1);
    }
    m_row->addStretch(1);
    if (contents.alternateButton) {
        m_alternate = addButton(new QPushButton, toQt(*contents.alternateButton), 0);
    }
    m_default = addButton(new ProminentButton, toQt(contents.defaultButton.value_or("OK")), 1);
}

QPushButton* AlertView::addButton(QPushButton* button, const QString& title, long code) {
    // Titles are shown as they are: an ampersand is no mark of a shortcut here.
    button->setText(QString(title).replace(u'&', QString::fromLatin1("&&")));
    button->setAccessibleName(title);
    button->setAutoDefault(true);
    connect(button, &QPushButton::clicked, this, [this, code] { m_answered(code); });
    m_row->addWidget(button);
    return button;
}

SheetButtons AlertView::answerButtons() const {
    return {.onReturn = m_default, .onEscape = m_alternate, .focused = m_default};
}

QPushButton* AlertView::buttonForClosing() const {
    return m_alternate == nullptr && m_other == nullptr ? m_default : m_alternate;
}

QPushButton* AlertView::button(long code) const { return code == 1 ? m_default : code == 0 ? m_alternate : m_other; }

int AlertView::buttonRowWidth() const {
    int width = 0;
    for (const auto* present : {m_default, m_alternate, m_other}) {
        width += present != nullptr ? present->sizeHint().width() + gap : 0;
    }
    return width;
}

void AlertView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    const bool fits = buttonRowWidth() <= width() - 2 * margin + gap;
    // Long titles stand one upon the other, the default button on top.
    m_row->setDirection(fits ? QBoxLayout::LeftToRight : QBoxLayout::BottomToTop);
}

}  // namespace platform::qt
