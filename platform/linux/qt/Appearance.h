// Colours of the windows: a light and a dark palette over one widget style, and the few measures shared by all windows.
#pragma once

#include <QColor>
#include <QPalette>

class QApplication;
class QWidget;

namespace platform::qt {

enum class Appearance { light, dark };

// What the user's desktop asks for. WICKFIELD_APPEARANCE (light or dark) goes before it.
Appearance preferredAppearance();

QPalette paletteFor(Appearance appearance);
Appearance appearanceOf(const QPalette& palette);

// The colour of a prominent button; its text is white.
QColor accentColor(const QPalette& palette);

// For a text that says what went wrong.
QColor warningColor(const QPalette& palette);

// Ratio of the luminances of two opaque colours, from 1 to 21.
double contrast(const QColor& one, const QColor& other);

// False when the user wants no animations: by the style, or by WICKFIELD_MOTION=reduced.
bool animationsWanted(const QWidget& widget);

// Style and palette of the application; before its first window is made.
void applyAppearance(QApplication& application, Appearance appearance);

}  // namespace platform::qt
