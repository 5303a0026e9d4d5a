#include "platform/linux/qt/AlertIcon.h"

#include <QPainter>
#include <QPainterPath>

#include "platform/linux/qt/Appearance.h"

namespace platform::qt {

namespace {

constexpr int side = 48;

void drawInstallation(QPainter& painter) {
    painter.drawLine(QPointF(24, 10), QPointF(24, 27));
    painter.drawPolyline(QPolygonF({QPointF(17, 20.5), QPointF(24, 27.5), QPointF(31, 20.5)}));
    painter.drawPolyline(QPolygonF({QPointF(12, 27), QPointF(12, 36), QPointF(36, 36), QPointF(36, 27)}));
}

void drawLock(QPainter& painter) {
    QPainterPath shackle(QPointF(17, 22));
    shackle.lineTo(17, 17);
    shackle.arcTo(QRectF(17, 10, 14, 14), 180, -180);
    shackle.lineTo(31, 22);
    painter.drawPath(shackle);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(QRectF(12, 21, 24, 17), 3, 3);
}

}  // namespace

AlertIcon::AlertIcon(QWidget* parent) : AlertIcon(Mark::installation, parent) {}

AlertIcon::AlertIcon(Mark mark, QWidget* parent) : QWidget(parent), m_mark(mark) { setFixedSize(side, side); }

QSize AlertIcon::sizeHint() const { return {side, side}; }

void AlertIcon::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(width() / double(side), height() / double(side));
    painter.setPen(Qt::NoPen);
    painter.setBrush(accentColor(palette()));
    painter.drawRoundedRect(QRectF(2, 2, 44, 44), 10, 10);

    painter.setPen(QPen(Qt::white, 3.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    m_mark == Mark::lock ? drawLock(painter) : drawInstallation(painter);
}

}  // namespace platform::qt
