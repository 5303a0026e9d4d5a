#include "platform/linux/qt/BackgroundView.h"

#include <QLinearGradient>
#include <QPainter>

#include "platform/linux/qt/Appearance.h"

namespace platform::qt {

BackgroundView::BackgroundView(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Expanding);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void BackgroundView::setImage(const QImage& image) {
    m_image = image;
    m_scaled = {};
    update();
}

QSize BackgroundView::sizeHint() const { return {400, 240}; }

void BackgroundView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const bool dark = appearanceOf(palette()) == Appearance::dark;
    QLinearGradient backdrop(0, 0, width(), height());
    backdrop.setColorAt(0, dark ? QColor(0x2b, 0x33, 0x3f) : QColor(0xdc, 0xe4, 0xee));
    backdrop.setColorAt(1, dark ? QColor(0x1a, 0x1e, 0x25) : QColor(0xb9, 0xc6, 0xd6));
    painter.fillRect(rect(), backdrop);
    if (!m_image.isNull() && !size().isEmpty()) {
        const double ratio = devicePixelRatioF();
        const QSize wanted = m_image.size().scaled(size() * ratio, Qt::KeepAspectRatioByExpanding);
        if (m_scaled.size() != wanted) {
            m_scaled = QPixmap::fromImage(m_image.scaled(wanted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
            m_scaled.setDevicePixelRatio(ratio);
        }
        QRectF place(QPointF(0, 0), QSizeF(wanted) / ratio);
        place.moveCenter(QRectF(rect()).center());
        painter.drawPixmap(place.topLeft(), m_scaled);
    }
    painter.fillRect(0, height() - 1, width(), 1, palette().color(QPalette::Mid));
}

}  // namespace platform::qt
