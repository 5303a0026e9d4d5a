#include "platform/linux/qt/ProminentButton.h"

#include <QApplication>
#include <QEvent>

#include "platform/linux/qt/Appearance.h"

namespace platform::qt {

namespace {

constexpr int leastWidth = 96;

}  // namespace

ProminentButton::ProminentButton(QWidget* parent) : QPushButton(parent) {
    setAutoDefault(true);
    setDefault(true);
    applyAccent();
}

QSize ProminentButton::sizeHint() const { return QPushButton::sizeHint().expandedTo(QSize(leastWidth, 0)); }

void ProminentButton::applyAccent() {
    m_applying = true;
    QPalette accented = QApplication::palette();
    const QColor disabled = accented.color(QPalette::Button);
    accented.setColor(QPalette::Button, accentColor(accented));
    accented.setColor(QPalette::ButtonText, Qt::white);
    accented.setColor(QPalette::Disabled, QPalette::Button, disabled);
    accented.setColor(QPalette::Disabled, QPalette::ButtonText,
                      QApplication::palette().color(QPalette::Disabled, QPalette::ButtonText));
    setPalette(accented);
    m_applying = false;
}

void ProminentButton::changeEvent(QEvent* event) {
    QPushButton::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && !m_applying) {
        applyAccent();
    }
}

}  // namespace platform::qt
