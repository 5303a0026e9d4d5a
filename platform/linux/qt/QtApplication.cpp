#include "platform/linux/qt/QtApplication.h"

#include <QPushButton>
#include <QTextBrowser>
#include <utility>

#include "platform/linux/qt/ImageFile.h"
#include "platform/linux/qt/ProminentButton.h"
#include "platform/linux/qt/QtAlerts.h"
#include "platform/linux/qt/QtControls.h"
#include "platform/linux/qt/QtText.h"
#include "platform/linux/qt/SheetOverlay.h"
#include "platform/linux/qt/agreement/AgreementDocument.h"

namespace platform::qt {

namespace {

// Return presses the prominent button of the contents, Escape the plain one when there is only one. A text has the
// focus first, so that it can be scrolled by the keyboard.
SheetButtons buttonsOf(const QWidget& contents) {
    SheetButtons buttons;
    buttons.focused = contents.findChild<QTextBrowser*>();
    int others = 0;
    for (auto* button : contents.findChildren<QPushButton*>()) {
        if (qobject_cast<ProminentButton*>(button) != nullptr) {
            buttons.onReturn = button;
        } else {
            buttons.onEscape = ++others == 1 ? button : nullptr;
        }
    }
    return buttons;
}

}  // namespace

QtApplication::QtApplication(std::function<void()> endProcess) : m_endProcess(std::move(endProcess)) {}

void QtApplication::terminate() {
    if (!m_terminating.exchange(true)) {
        QMetaObject::invokeMethod(
            this, [this] { finish(); }, Qt::QueuedConnection);
    }
}

void QtApplication::onWillTerminate(std::function<void()> observer) {
    const std::lock_guard lock(m_mutex);
    m_observers.push_back(std::move(observer));
}

void QtApplication::finish() {
    m_terminating = true;
    if (std::exchange(m_finished, true)) {
        return;
    }
    for (;;) {
        std::function<void()> observer;
        {
            const std::lock_guard lock(m_mutex);
            if (m_observers.empty()) {
                break;
            }
            observer = std::move(m_observers.back());
            m_observers.pop_back();
        }
        if (observer) {
            observer();
        }
    }
    m_endProcess();
}

void QtApplication::beginSheet(Window& sheet, Window& parent, std::function<void()> didEnd) {
    auto* contents = dynamic_cast<QtWindow*>(&sheet);
    auto* window = dynamic_cast<QtWindow*>(&parent);
    if (contents == nullptr || window == nullptr || contents == window) {
        return;
    }
    endSheet(sheet);
    m_sheetEnds[&sheet] = std::move(didEnd);
    QWidget& widget = contents->widget();
    new SheetOverlay(window->widget(), widget, buttonsOf(widget), QAccessible::Dialog);  // belongs to its window
}

void QtApplication::endSheet(Window& sheet) {
    const auto found = m_sheetEnds.find(&sheet);
    if (found == m_sheetEnds.end()) {
        return;
    }
    const auto didEnd = std::move(found->second);
    m_sheetEnds.erase(found);
    sheet.orderOut();
    if (didEnd) {
        didEnd();
    }
}

void QtApplication::runAlertPanel(const std::string& title, const std::string& message) {
    AlertContents contents;
    contents.messageText = title;
    contents.informativeText = message;
    runModalAlert(contents);
}

std::unique_ptr<Image> QtApplication::loadImage(const std::string& path) {
    QImage image = readImageFile(path).image;
    return image.isNull() ? nullptr : std::make_unique<QtImage>(std::move(image));
}

std::unique_ptr<Document> QtApplication::loadDocument(const std::string& path) { return loadAgreement(path); }

}  // namespace platform::qt
