#include "platform/linux/qt/AlertIcon.h"

#include <QPainter>
#include <QPainterPath>

#include "platform/linux/qt/Appearance.h"

namespace platform::qt {

namespace {

constexpr int side = 48;

}  // namespace

AlertIcon::AlertIcon(QWidget* parent) : QWidget(parent) { setFixedSize(side, side); }

QSize AlertIcon::sizeHint() const { return {side, side}; }

// An open box with an arrow into it: what an installer does.
void AlertIcon::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(width() / double(side), height() / double(side));
    painter.setPen(Qt::NoPen);
    painter.setBrush(accentColor(palette()));
    painter.drawRoundedRect(QRectF(2, 2, 44, 44), 10, 10);

    painter.setPen(QPen(Qt::white, 3.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawLine(QPointF(24, 10), QPointF(24, 27));
    painter.drawPolyline(QPolygonF({QPointF(17, 20.5), QPointF(24, 27.5), QPointF(31, 20.5)}));
    painter.drawPolyline(QPolygonF({QPointF(12, 27), QPointF(12, 36), QPointF(36, 36), QPointF(36, 27)}));
}

}  // namespace platform::qt
