#include "platform/linux/qt/QtPasswordPrompt.h"

#include <QApplication>
#include <QEvent>
#include <utility>

#include "platform/linux/qt/PasswordField.h"
#include "platform/linux/qt/PasswordSheet.h"
#include "platform/linux/qt/PasswordWindow.h"
#include "platform/linux/qt/SheetOverlay.h"

namespace platform::qt {

QtPasswordPrompt::QtPasswordPrompt(Application& application) {
    application.onWillTerminate([prompt = QPointer(this)] {
        if (prompt) {
            prompt->m_isEnding = true;
            prompt->answer(std::nullopt);
        }
    });
}

QtPasswordPrompt::~QtPasswordPrompt() { takeAway(); }

void QtPasswordPrompt::attachTo(QWidget& window) {
    m_window = &window;
    window.installEventFilter(this);
}

void QtPasswordPrompt::ask(rights::PasswordRequest request, Answered answered) {
    QMetaObject::invokeMethod(
        this,
        [this, request = std::move(request), answered = std::move(answered)]() mutable {
            present(request, std::move(answered));
        },
        Qt::QueuedConnection);
}

void QtPasswordPrompt::close() {
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_answered = nullptr;
            takeAway();
        },
        Qt::QueuedConnection);
}

void QtPasswordPrompt::present(const rights::PasswordRequest& request, Answered answered) {
    m_answered = std::move(answered);
    if (m_isEnding) {
        answer(std::nullopt);
        return;
    }
    if (!m_sheet) {
        show(request);
        return;
    }
    m_sheet->ask(request);
    if (m_overlay && request.problem == rights::PasswordRequest::Problem::wrongPassword) {
        m_overlay->shake();
    }
}

void QtPasswordPrompt::show(const rights::PasswordRequest& request) {
    const bool hasWindow = m_window && m_window->isVisible();
    const QString title = m_window ? m_window->windowTitle() : QString();
    m_sheet = new PasswordSheet(title.isEmpty() ? QGuiApplication::applicationDisplayName() : title,
                                [this](std::optional<rights::PasswordAnswer> given) { answer(std::move(given)); });
    m_sheet->ask(request);
    if (!hasWindow) {
        m_ownFrame = new PasswordWindow(m_sheet);
        m_ownFrame->present();
        return;
    }
    m_overlay = new SheetOverlay(*m_window, *m_sheet, m_sheet->buttons(), QAccessible::Dialog);
    if (!m_window->isActiveWindow()) {
        QApplication::alert(m_window);
    }
}

// A cancel may follow an answer that is being checked.
void QtPasswordPrompt::answer(std::optional<rights::PasswordAnswer> given) {
    if (given) {
        const Answered answered = m_answered;
        if (answered) {
            answered(std::move(given));
        }
        return;
    }
    takeAway();
    if (const auto answered = std::exchange(m_answered, nullptr)) {
        answered(std::nullopt);
    }
}

// Deleted later: this may be running because one of its buttons was pressed.
void QtPasswordPrompt::takeAway() {
    if (m_sheet) {
        m_sheet->field().clear();
    }
    if (m_overlay) {
        m_overlay->release();
        m_overlay = nullptr;
        if (m_sheet) {
            m_sheet->deleteLater();
        }
    }
    if (m_ownFrame) {
        m_ownFrame->hide();
        m_ownFrame->deleteLater();
        m_ownFrame = nullptr;
    }
    m_sheet = nullptr;
}

bool QtPasswordPrompt::eventFilter(QObject* watched, QEvent* event) {
    const bool isClosed = event->type() == QEvent::Hide && !event->spontaneous();
    if (watched == m_window && isClosed && m_overlay) {
        answer(std::nullopt);
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace platform::qt
