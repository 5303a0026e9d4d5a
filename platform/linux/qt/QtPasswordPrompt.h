// Asks for a password in a sheet on the installer's window.
#pragma once

#include <QObject>
#include <QPointer>

#include "platform/linux/rights/PasswordPrompt.h"
#include "platform/ports/Application.h"

class QWidget;

namespace platform::qt {

class PasswordSheet;
class PasswordWindow;
class SheetOverlay;

// Made on the main thread, where it answers too. A window that is closed, and an application that ends, have cancelled.
class QtPasswordPrompt : public QObject, public rights::PasswordPrompt {
    Q_OBJECT

public:
    explicit QtPasswordPrompt(Application& application);
    ~QtPasswordPrompt() override;

    // The window that asks, by its title, and that carries the sheet. Until there is one, and while it is hidden, the
    // question comes up in a window of its own. Main thread.
    void attachTo(QWidget& window);

    void ask(rights::PasswordRequest request, Answered answered) override;
    void close() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void present(const rights::PasswordRequest& request, Answered answered);
    void show(const rights::PasswordRequest& request);
    void answer(std::optional<rights::PasswordAnswer> given);
    void takeAway();

    QPointer<QWidget> m_window;
    Answered m_answered;  // null: nobody waits for an answer
    bool m_isEnding = false;
    QPointer<PasswordSheet> m_sheet;
    QPointer<SheetOverlay> m_overlay;     // the one or
    QPointer<PasswordWindow> m_ownFrame;  // the other
};

}  // namespace platform::qt
