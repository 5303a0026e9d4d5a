// The question for a password in a window of its own, where there is no other window.
#pragma once

#include <QWidget>

namespace platform::qt {

class PasswordSheet;

// Owns the sheet. Closing the window cancels.
class PasswordWindow : public QWidget {
    Q_OBJECT

public:
    explicit PasswordWindow(PasswordSheet* sheet);

    void present();

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void fit();

    PasswordSheet* m_sheet;
};

}  // namespace platform::qt
