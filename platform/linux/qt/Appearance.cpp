#include "platform/linux/qt/Appearance.h"

#include <QApplication>
#include <QGuiApplication>
#include <QStyle>
#include <QWidget>
#include <algorithm>
#include <cmath>

#include "platform/linux/qt/InstallerStyle.h"

namespace platform::qt {

namespace {

struct Colors {
    QRgb window, text, base, alternateBase, button, disabledText, link, visitedLink, highlight, light, mid, dark;
};

constexpr Colors lightColors{0xfff5f6f8, 0xff1d2128, 0xffffffff, 0xfff0f2f5, 0xfffafbfc, 0xff7a808a,
                             0xff0a57c2, 0xff6a3fb5, 0xff0b5fd6, 0xffffffff, 0xffc6cbd3, 0xff9aa1ac};
constexpr Colors darkColors{0xff23262b, 0xffeceef1, 0xff1b1d21, 0xff272a30, 0xff373b43, 0xff868c96,
                            0xff80b6ff, 0xffc3a5ff, 0xff2f6fde, 0xff454a54, 0xff3f444d, 0xff14161a};

double linear(double channel) {
    return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

}  // namespace

double contrast(const QColor& one, const QColor& other) {
    const double a = luminance(one);
    const double b = luminance(other);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

Appearance appearanceOf(const QPalette& palette) {
    return luminance(palette.color(QPalette::Window)) < luminance(palette.color(QPalette::WindowText))
               ? Appearance::dark
               : Appearance::light;
}

Appearance preferredAppearance() {
    const QByteArray wanted = qgetenv("WICKFIELD_APPEARANCE");
    if (wanted == "dark") {
        return Appearance::dark;
    }
    if (wanted == "light") {
        return Appearance::light;
    }
    // A desktop's own theme brings its palette along.
    return appearanceOf(QGuiApplication::palette());
}

QPalette paletteFor(Appearance appearance) {
    const Colors& colors = appearance == Appearance::dark ? darkColors : lightColors;
    QPalette palette;
    palette.setColor(QPalette::Window, colors.window);
    palette.setColor(QPalette::WindowText, colors.text);
    palette.setColor(QPalette::Base, colors.base);
    palette.setColor(QPalette::AlternateBase, colors.alternateBase);
    palette.setColor(QPalette::Text, colors.text);
    palette.setColor(QPalette::PlaceholderText, colors.disabledText);
    palette.setColor(QPalette::Button, colors.button);
    palette.setColor(QPalette::ButtonText, colors.text);
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::ToolTipBase, colors.base);
    palette.setColor(QPalette::ToolTipText, colors.text);
    palette.setColor(QPalette::Link, colors.link);
    palette.setColor(QPalette::LinkVisited, colors.visitedLink);
    palette.setColor(QPalette::Highlight, colors.highlight);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Light, colors.light);
    palette.setColor(QPalette::Midlight, colors.button);
    palette.setColor(QPalette::Mid, colors.mid);
    palette.setColor(QPalette::Dark, colors.dark);
    palette.setColor(QPalette::Shadow, Qt::black);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, colors.disabledText);
    }
    return palette;
}

QColor accentColor(const QPalette& palette) { return palette.color(QPalette::Active, QPalette::Highlight); }

QColor warningColor(const QPalette& palette) {
    return appearanceOf(palette) == Appearance::dark ? QColor(0xff9d94) : QColor(0xb42318);
}

bool animationsWanted(const QWidget& widget) {
    return qgetenv("WICKFIELD_MOTION") != "reduced" &&
           widget.style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &widget) > 0;
}

void applyAppearance(QApplication& application, Appearance appearance) {
    application.setStyle(new InstallerStyle);  // owned by the application
    application.setPalette(paletteFor(appearance));
}

}  // namespace platform::qt
