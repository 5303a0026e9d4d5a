#include "platform/linux/qt/AccessibleRoles.h"

#include <QAccessibleWidget>

#include "platform/linux/qt/AlertWindow.h"
#include "platform/linux/qt/BackgroundView.h"
#include "platform/linux/qt/MainWindow.h"
#include "platform/linux/qt/SheetOverlay.h"

namespace platform::qt {

namespace {

class AccessibleDialog : public QAccessibleWidget {
public:
    AccessibleDialog(QWidget* dialog, QAccessible::Role role, bool modal)
        : QAccessibleWidget(dialog, role), m_modal(modal) {}

    QAccessible::State state() const override {
        auto state = QAccessibleWidget::state();
        state.modal = m_modal;
        return state;
    }

private:
    bool m_modal;
};

QAccessibleInterface* makeAccessible(const QString&, QObject* object) {
    if (auto* sheet = qobject_cast<SheetOverlay*>(object)) {
        return new AccessibleDialog(sheet, sheet->role(), true);
    }
    if (auto* alert = qobject_cast<AlertWindow*>(object)) {
        return new AccessibleDialog(alert, QAccessible::AlertMessage, alert->isModal());
    }
    if (auto* window = qobject_cast<MainWindow*>(object)) {
        return new QAccessibleWidget(window, QAccessible::Window);
    }
    if (auto* picture = qobject_cast<BackgroundView*>(object)) {
        return new QAccessibleWidget(picture, QAccessible::Graphic);
    }
    return nullptr;
}

}  // namespace

void installAccessibleRoles() {
    static const bool installed = [] {
        QAccessible::installFactory(makeAccessible);
        return true;
    }();
    static_cast<void>(installed);
}

}  // namespace platform::qt
