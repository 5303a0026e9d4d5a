#include "platform/linux/qt/QtControls.h"

#include <QPushButton>
#include <QTextBrowser>

#include "platform/linux/qt/BackgroundView.h"
#include "platform/linux/qt/ElidedLabel.h"
#include "platform/linux/qt/LinkLabel.h"
#include "platform/linux/qt/QtText.h"
#include "platform/linux/qt/SheetOverlay.h"
#include "platform/linux/qt/Spinner.h"

namespace platform::qt {

namespace {

constexpr qsizetype longestTitle = 1000;  // characters; the window system drops a program that sends it megabytes

}  // namespace

void PlainTextField::setHidden(bool hidden) { m_label.setHidden(hidden); }
void PlainTextField::setStringValue(const std::string& text) { m_label.setPlainText(toQt(text)); }

void PlainTextField::setAttributedStringValue(const AttributedString& text) {
    std::string plain;
    for (const TextRun& run : text) {
        plain += run.text;
    }
    setStringValue(plain);
}

void PlainTextField::setSelectable(bool selectable) {
    m_label.setTextInteractionFlags(selectable ? Qt::TextSelectableByMouse : Qt::NoTextInteraction);
}

void LinkTextField::setHidden(bool hidden) { m_label.setHidden(hidden); }
void LinkTextField::setStringValue(const std::string& text) { m_label.setRuns({{.text = text, .link = {}}}); }
void LinkTextField::setAttributedStringValue(const AttributedString& text) { m_label.setRuns(text); }

void LinkTextField::setSelectable(bool selectable) {
    m_selectable = selectable;
    applyInteraction();
}

void LinkTextField::setAllowsEditingTextAttributes(bool allows) {
    m_allowsAttributes = allows;
    applyInteraction();
}

void LinkTextField::applyInteraction() {
    Qt::TextInteractionFlags flags = Qt::NoTextInteraction;
    if (m_selectable) {
        flags |= Qt::TextSelectableByMouse;
        if (m_allowsAttributes) {
            flags |= Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard;
        }
    }
    m_label.setTextInteractionFlags(flags);
}

void QtButton::setHidden(bool hidden) { m_button.setHidden(hidden); }
void QtButton::setEnabled(bool enabled) {
    if (!enabled && m_button.hasFocus()) {
        m_button.clearFocus();  // else the next button would get it, and the next Return with it
    }
    m_button.setEnabled(enabled);
}

void QtProgressIndicator::setHidden(bool hidden) { m_spinner.setHidden(hidden); }
void QtProgressIndicator::startAnimation() { m_spinner.startAnimation(); }
void QtProgressIndicator::stopAnimation() { m_spinner.stopAnimation(); }

void QtImageView::setHidden(bool hidden) { m_view.setHidden(hidden); }

void QtImageView::setImage(std::unique_ptr<Image> image) {
    const auto* loaded = dynamic_cast<const QtImage*>(image.get());
    m_view.setImage(loaded != nullptr ? loaded->image : QImage());
}

void QtTextView::setHidden(bool hidden) { m_browser().setHidden(hidden); }

void QtTextView::setDocument(std::unique_ptr<Document> document) {
    QTextBrowser& browser = m_browser();
    std::unique_ptr<AgreementDocument> shown(dynamic_cast<AgreementDocument*>(document.get()));
    if (shown != nullptr) {
        static_cast<void>(document.release());
        browser.setDocument(shown->document.get());
    } else {
        browser.setDocument(nullptr);  // an empty one of its own
    }
    m_document = std::move(shown);
}

void QtTextView::setStandardTextColor() {
    QTextBrowser& browser = m_browser();
    applyStandardTextColor(*browser.document(), browser.palette());
}

void QtTextView::setEditable(bool editable) { m_browser().setReadOnly(!editable); }

void QtWindow::setTitle(const std::string& title) { widget().setWindowTitle(toQt(title).left(longestTitle)); }

void QtWindow::orderOut() {
    for (QWidget* parent = widget().parentWidget(); parent != nullptr; parent = parent->parentWidget()) {
        if (auto* sheet = qobject_cast<SheetOverlay*>(parent)) {
            sheet->release();
            return;
        }
    }
    widget().hide();
}

void QtWindow::makeKeyAndOrderFront() {
    widget().show();
    widget().raise();
    widget().activateWindow();
}

bool QtWindow::hasAttachedSheet() { return SheetOverlay::topmost(widget()) != nullptr; }

}  // namespace platform::qt
