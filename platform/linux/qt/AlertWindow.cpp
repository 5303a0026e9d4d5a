#include "platform/linux/qt/AlertWindow.h"

#include <QAccessible>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include "platform/linux/qt/AccessibleRoles.h"
#include "platform/linux/qt/AnswerKeys.h"

namespace platform::qt {

namespace {

constexpr int edge = 1;  // tells it from a sheet that it covers, where no window manager frames it

}  // namespace

AlertWindow::AlertWindow(AlertView* view, Qt::WindowModality modality, const QWidget* near)
    : QWidget(nullptr, Qt::Dialog), m_view(view) {
    installAccessibleRoles();
    setWindowTitle(view->windowTitle());
    setAccessibleName(view->windowTitle());
    setWindowModality(modality);
    setAttribute(Qt::WA_QuitOnClose, false);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(edge, edge, edge, edge);
    layout->addWidget(view);
    placeNear(near);
}

void AlertWindow::placeNear(const QWidget* near) {
    const QScreen* const screen = near != nullptr ? near->screen() : QGuiApplication::primaryScreen();
    const QRect area = screen != nullptr ? screen->availableGeometry() : QRect(0, 0, 480, 320);
    QSize wanted = sizeHint();
    wanted.setHeight(layout()->totalHeightForWidth(wanted.width()));
    resize(wanted.boundedTo(area.size()));
    QRect place(QPoint(0, 0), size());
    place.moveCenter(near != nullptr && near->isVisible() ? near->frameGeometry().center() : area.center());
    move(place.topLeft());
}

void AlertWindow::present() {
    show();
    raise();
    activateWindow();
    m_view->answerButtons().onReturn->setFocus(Qt::OtherFocusReason);
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

void AlertWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Mid));
    painter.fillRect(rect().adjusted(edge, edge, -edge, -edge), palette().color(QPalette::Window));
}

void AlertWindow::keyPressEvent(QKeyEvent* event) {
    const auto buttons = m_view->answerButtons();
    if (!answerByKey(*event, buttons.onReturn, buttons.onEscape)) {
        QWidget::keyPressEvent(event);
    }
}

void AlertWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    if (auto* button = m_view->buttonForClosing()) {
        button->click();
    }
}

}  // namespace platform::qt
