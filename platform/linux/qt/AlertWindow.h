// An alert in a window of its own.
#pragma once

#include <QWidget>

#include "platform/linux/qt/AlertView.h"

namespace platform::qt {

// Shows the view, which it owns, in the middle of `near` (of the screen when null). Closing the window presses the
// alternate button, or the only one; an alert with neither stays.
class AlertWindow : public QWidget {
    Q_OBJECT

public:
    AlertWindow(AlertView* view, Qt::WindowModality modality, const QWidget* near);

    void present();

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void placeNear(const QWidget* near);

    AlertView* m_view;
};

}  // namespace platform::qt
