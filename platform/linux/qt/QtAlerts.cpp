#include "platform/linux/qt/QtAlerts.h"

#include <QApplication>
#include <QEventLoop>
#include <utility>

#include "platform/linux/qt/AlertView.h"
#include "platform/linux/qt/AlertWindow.h"
#include "platform/linux/qt/QtControls.h"
#include "platform/linux/qt/SheetOverlay.h"

namespace platform::qt {

QtAlert::~QtAlert() {
    m_didEnd = nullptr;
    takeAway();
}

void QtAlert::begin(Window* parent, std::function<void(long)> didEnd) {
    takeAway();
    m_didEnd = std::move(didEnd);
    m_view = new AlertView(m_contents, [this](long code) { answer(code); });
    if (auto* window = dynamic_cast<QtWindow*>(parent)) {
        QWidget& widget = window->widget();
        widget.show();
        m_sheet = new SheetOverlay(widget, *m_view, m_view->answerButtons(), QAccessible::AlertMessage);
    } else {
        m_window = new AlertWindow(m_view, Qt::NonModal, QApplication::activeWindow());
        m_window->present();
    }
}

bool QtAlert::isVisible() { return m_view && m_view->isVisible(); }

void QtAlert::orderOut() {
    m_didEnd = nullptr;
    takeAway();
}

void QtAlert::answer(long code) {
    const auto ended = std::exchange(m_didEnd, nullptr);
    takeAway();
    if (ended) {
        ended(code);
    }
}

// Deleted later: this may be running because one of its buttons was pressed.
void QtAlert::takeAway() {
    if (m_sheet) {
        m_sheet->release();
        m_sheet = nullptr;
        if (m_view) {
            m_view->deleteLater();
        }
    }
    if (m_window) {
        m_window->hide();
        m_window->deleteLater();
        m_window = nullptr;
    }
    m_view = nullptr;
}

void runModalAlert(const AlertContents& contents) {
    QEventLoop loop;
    bool answered = false;
    auto* view = new AlertView(contents, [&](long) {
        answered = true;
        loop.quit();
    });
    AlertWindow window(view, Qt::ApplicationModal, QApplication::activeWindow());
    window.present();
    while (!answered) {
        loop.exec();
    }
}

}  // namespace platform::qt
