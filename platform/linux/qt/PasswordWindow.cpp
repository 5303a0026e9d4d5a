#include "platform/linux/qt/PasswordWindow.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QVBoxLayout>

#include "platform/linux/qt/AccessibleRoles.h"
#include "platform/linux/qt/PasswordSheet.h"

namespace platform::qt {

PasswordWindow::PasswordWindow(PasswordSheet* sheet) : QWidget(nullptr, Qt::Dialog), m_sheet(sheet) {
    installAccessibleRoles();
    setWindowTitle(sheet->windowTitle());
    setAccessibleName(sheet->windowTitle());
    setAttribute(Qt::WA_QuitOnClose, false);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(sheet);
}

void PasswordWindow::fit() {
    QSize wanted = sizeHint();
    wanted.setHeight(layout()->totalHeightForWidth(wanted.width()));
    resize(wanted.boundedTo(screen()->availableSize()));
}

void PasswordWindow::present() {
    fit();
    QRect place(QPoint(0, 0), size());
    place.moveCenter(screen()->availableGeometry().center());
    move(place.topLeft());
    show();
    raise();
    activateWindow();
    m_sheet->buttons().focused->setFocus(Qt::OtherFocusReason);
}

bool PasswordWindow::event(QEvent* event) {
    const bool handled = QWidget::event(event);
    if (event->type() == QEvent::LayoutRequest) {
        fit();
    }
    return handled;
}

void PasswordWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    m_sheet->cancel();
}

}  // namespace platform::qt
