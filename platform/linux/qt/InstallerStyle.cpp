#include "platform/linux/qt/InstallerStyle.h"

#include <QPainter>
#include <QStyleFactory>
#include <QStyleOptionButton>
#include <QStyleOptionSlider>
#include <algorithm>
#include <cstdint>

#include "platform/linux/qt/Appearance.h"

namespace platform::qt {

namespace {

constexpr double corner = 5;
constexpr int sidePadding = 14;
constexpr int heightPadding = 14;
constexpr int ringRoom = 3;    // kept free around a button for the ring of the focus
constexpr double chevron = 4;  // half of its width
constexpr int scrollBarWidth = 14;
constexpr int leastHandle = 28;
constexpr double handleInset = 3;

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

// The edge and the ground of a field to type into, or to choose from.
void drawField(const QStyleOption& field, const QColor& ground, QPainter& painter) {
    const bool isEnabled = field.state.testFlag(QStyle::State_Enabled);
    const bool hasFocus = isEnabled && field.state.testFlag(QStyle::State_HasFocus);
    const double line = hasFocus ? 2 : 1;
    const auto edge = hasFocus ? QPalette::Highlight : isEnabled ? QPalette::PlaceholderText : QPalette::Mid;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(field.palette.color(edge), line));
    painter.setBrush(ground);
    painter.drawRoundedRect(QRectF(field.rect).adjusted(line / 2, line / 2, -line / 2, -line / 2), corner, corner);
    painter.restore();
}

void drawChevron(const QStyleOptionComboBox& box, const QRect& place, QPainter& painter) {
    const QPointF center = QRectF(place).center();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(box.palette.color(QPalette::Text), 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(QPolygonF({center + QPointF(-chevron, -chevron / 2), center + QPointF(0, chevron / 2),
                                    center + QPointF(chevron, -chevron / 2)}));
    painter.restore();
}

// Of the way of a scroll bar's handle: where it begins, and how long it is.
struct Span {
    int begin;
    int length;
};

Span handleOf(const QStyleOptionSlider& bar) {
    const int whole = bar.orientation == Qt::Horizontal ? bar.rect.width() : bar.rect.height();
    const std::int64_t range = std::int64_t{bar.maximum} - bar.minimum;
    const std::int64_t total = range + bar.pageStep;
    const auto share = total > 0 ? static_cast<int>(std::int64_t{whole} * bar.pageStep / total) : whole;
    const int length = range > 0 ? std::min(std::max(share, leastHandle), whole) : whole;
    return {
        QStyle::sliderPositionFromValue(bar.minimum, bar.maximum, bar.sliderPosition, whole - length, bar.upsideDown),
        length};
}

}  // namespace

InstallerStyle::InstallerStyle() : QProxyStyle(QStyleFactory::create(QString::fromLatin1("Fusion"))) {}

void InstallerStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                   const QWidget* widget) const {
    const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
    if (frame != nullptr && element == PE_PanelLineEdit && frame->lineWidth > 0) {
        drawField(*frame, frame->palette.color(QPalette::Base), *painter);
    } else {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

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

void InstallerStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                                        const QWidget* widget) const {
    const auto* box = qstyleoption_cast<const QStyleOptionComboBox*>(option);
    if (box != nullptr && control == CC_ComboBox) {
        drawField(*box, box->palette.color(box->editable ? QPalette::Base : QPalette::Button), *painter);
        drawChevron(*box, subControlRect(CC_ComboBox, box, SC_ComboBoxArrow, widget), *painter);
        return;
    }
    const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (bar == nullptr || control != CC_ScrollBar) {
        QProxyStyle::drawComplexControl(control, option, painter, widget);
        return;
    }
    painter->save();
    painter->fillRect(bar->rect, bar->palette.color(QPalette::Base));
    if (bar->maximum > bar->minimum) {
        const QRectF handle = QRectF(subControlRect(CC_ScrollBar, bar, SC_ScrollBarSlider, widget))
                                  .adjusted(handleInset, handleInset, -handleInset, -handleInset);
        const double round = std::min(handle.width(), handle.height()) / 2;
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(bar->palette.color(QPalette::PlaceholderText));
        painter->drawRoundedRect(handle, round, round);
    }
    painter->restore();
}

QRect InstallerStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                                     const QWidget* widget) const {
    const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (bar == nullptr || control != CC_ScrollBar) {
        return QProxyStyle::subControlRect(control, option, part, widget);
    }
    const auto [begin, length] = handleOf(*bar);
    const bool across = bar->orientation == Qt::Horizontal;
    const auto along = [&](int from, int to) {
        const QRect& all = bar->rect;
        const QRect found = across ? QRect(all.x() + from, all.y(), to - from, all.height())
                                   : QRect(all.x(), all.y() + from, all.width(), to - from);
        return visualRect(bar->direction, all, found);
    };
    const int whole = across ? bar->rect.width() : bar->rect.height();
    switch (part) {
        case SC_ScrollBarGroove:
            return along(0, whole);
        case SC_ScrollBarSlider:
            return along(begin, begin + length);
        case SC_ScrollBarSubPage:
            return along(0, begin);
        case SC_ScrollBarAddPage:
            return along(begin + length, whole);
        default:
            return {};  // no arrows
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
        case PM_ScrollBarExtent:
            return scrollBarWidth;
        default:
            return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

}  // namespace platform::qt
