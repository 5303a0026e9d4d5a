// Fusion with push buttons that are flat, roomy and show plainly where the focus is, with fields whose edge is seen in
// the dark too, and with scroll bars that are a handle that is plainly seen.
#pragma once

#include <QProxyStyle>

namespace platform::qt {

class InstallerStyle : public QProxyStyle {
    Q_OBJECT

public:
    InstallerStyle();

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                         const QWidget* widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                           const QWidget* widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
};

}  // namespace platform::qt
