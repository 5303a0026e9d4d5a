// The installer's window and the agreement's sheet, by their layout files.
#pragma once

#include <QWidget>
#include <functional>
#include <memory>

#include "platform/linux/qt/QtControls.h"
#include "platform/ports/ApplicationMain.h"

namespace Ui {
class AgreementSheet;
class MainWindow;
}  // namespace Ui

namespace platform::qt {

class MainWindow : public QWidget {
    Q_OBJECT

public:
    MainWindow();
    ~MainWindow() override;

    const Outlets& outlets() const { return m_outlets; }

    // From here on the buttons tell the delegate, which must outlive the window. They do nothing before.
    void connectActions(ApplicationDelegate& delegate);

    void onClosed(std::function<void()> closed) { m_closed = std::move(closed); }

    // In the middle of the screen, no larger than it.
    void present();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    struct Controls;

    QWidget& agreementSheet();  // made when it is first asked for

    std::unique_ptr<Ui::MainWindow> m_ui;
    std::unique_ptr<Ui::AgreementSheet> m_agreementUi;
    std::unique_ptr<QWidget> m_agreementSheet;
    std::unique_ptr<Controls> m_controls;
    Outlets m_outlets;
    ApplicationDelegate* m_delegate = nullptr;
    std::function<void()> m_closed;
};

}  // namespace platform::qt
