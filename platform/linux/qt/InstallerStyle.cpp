#include "platform/linux/qt/InstallerStyle.h"

#include <QPainter>
#include <QStyleFactory>
#include <QStyleOptionButton>

#include "platform/linux/qt/Appearance.h"

namespace platform::qt {

namespace {

constexpr double corner = 5;
constexpr int sidePadding = 14;
constexpr int heightPadding = 14;
constexpr int ringRoom = 3;  // kept free around a button for the ring of the focus

QColor fillOf(const QStyleOptionButton& button) {
    const QColor fill = button.palette.color(QPalette::Button);
    const bool dark = appearanceOf(button.palette) == Appearance::dark;
    if (!button.state.testFlag(QStyle::State_Enabled)) {
        return fill;
    }
    if (button.state.testFlag(QStyle::State_Sunken)) {
        return fill.darker(dark ? 125 : 112);
    }
    if (button.state.testFlag(QStyle::State_MouseOver)) {
        return fill.darker(dark ? 110 : 105);
    }
    return fill;
}

void drawButton(const QStyleOptionButton& button, QPainter& painter) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF body = QRectF(button.rect).adjusted(ringRoom, ringRoom, -ringRoom, -ringRoom);
    if (button.state.testFlag(QStyle::State_HasFocus)) {
        painter.setPen(QPen(button.palette.color(QPalette::Highlight), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(body.adjusted(-2, -2, 2, 2), corner + 2, corner + 2);
    }
    const QColor fill = fillOf(button);
    const bool accented = fill.saturation() > 100;
    painter.setPen(accented ? QPen(Qt::NoPen) : QPen(button.palette.color(QPalette::Mid)));
    painter.setBrush(fill);
    painter.drawRoundedRect(accented ? body : body.adjusted(0.5, 0.5, -0.5, -0.5), corner, corner);
    painter.restore();
}

}  // namespace

InstallerStyle::InstallerStyle() : QProxyStyle(QStyleFactory::create(QString::fromLatin1("Fusion"))) {}

void InstallerStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                                 const QWidget* widget) const {
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
    if (button == nullptr || (element != CE_PushButton && element != CE_PushButtonBevel)) {
        QProxyStyle::drawControl(element, option, painter, widget);
        return;
    }
    drawButton(*button, *painter);
    if (element == CE_PushButton) {
        QStyleOptionButton label(*button);
        label.rect = button->rect.adjusted(ringRoom, ringRoom, -ringRoom, -ringRoom);
        QProxyStyle::drawControl(CE_PushButtonLabel, &label, painter, widget);
    }
}

QSize InstallerStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                       const QWidget* widget) const {
    if (type == CT_PushButton) {
        return {size.width() + 2 * (sidePadding + ringRoom), size.height() + heightPadding + 2 * ringRoom};
    }
    return QProxyStyle::sizeFromContents(type, option, size, widget);
}

int InstallerStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    switch (metric) {
        case PM_ButtonShiftHorizontal:
        case PM_ButtonShiftVertical:
            return 0;
        default:
            return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

}  // namespace platform::qt
