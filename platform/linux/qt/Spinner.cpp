#include "platform/linux/qt/Spinner.h"

#include <QPainter>
#include <QTimerEvent>

#include "platform/linux/qt/Appearance.h"

namespace platform::qt {

namespace {

constexpr int side = 22;
constexpr int spokes = 12;
constexpr int stepMilliseconds = 80;
constexpr int calmStepMilliseconds = 500;  // when animations are unwanted it still shows that time passes

}  // namespace

Spinner::Spinner(QWidget* parent) : QProgressBar(parent) {
    setRange(0, 0);
    setTextVisible(false);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setFocusPolicy(Qt::NoFocus);
}

QSize Spinner::sizeHint() const { return {side, side}; }

void Spinner::startAnimation() {
    m_animating = true;
    updateTimer();
    update();
}

void Spinner::stopAnimation() {
    m_animating = false;
    updateTimer();
    update();
}

void Spinner::updateTimer() {
    if (m_animating && isVisible()) {
        m_timer.start(animationsWanted(*this) ? stepMilliseconds : calmStepMilliseconds, this);
    } else {
        m_timer.stop();
    }
}

void Spinner::showEvent(QShowEvent* event) {
    QProgressBar::showEvent(event);
    updateTimer();
}

void Spinner::hideEvent(QHideEvent* event) {
    QProgressBar::hideEvent(event);
    updateTimer();
}

void Spinner::timerEvent(QTimerEvent* event) {
    if (event->timerId() == m_timer.timerId()) {
        m_step = (m_step + 1) % spokes;
        update();
    } else {
        QProgressBar::timerEvent(event);
    }
}

void Spinner::paintEvent(QPaintEvent*) {
    if (!m_animating) {
        return;
    }
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(QRectF(rect()).center());
    const double scale = std::min(width(), height()) / 2.0;
    QColor color = palette().color(QPalette::WindowText);
    for (int spoke = 0; spoke < spokes; ++spoke) {
        const int age = (m_step - spoke + spokes) % spokes;
        color.setAlphaF(age == 0 ? 1.0F : 0.15F + 0.75F * static_cast<float>(spokes - age) / spokes);
        painter.setPen(QPen(color, scale * 0.16, Qt::SolidLine, Qt::RoundCap));
        painter.save();
        painter.rotate(360.0 / spokes * spoke);
        painter.drawLine(QPointF(0, -scale * 0.48), QPointF(0, -scale * 0.88));
        painter.restore();
    }
}

}  // namespace platform::qt
