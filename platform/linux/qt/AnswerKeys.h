#pragma once

#include <QAbstractButton>
#include <QKeyEvent>

namespace platform::qt {

// Return and Enter press `onReturn`, Escape presses `onEscape`, where they are there and enabled. True when the key was
// one of these. A button that has the focus takes Return itself, before this is asked.
inline bool answerByKey(const QKeyEvent& event, QAbstractButton* onReturn, QAbstractButton* onEscape) {
    const auto press = [](QAbstractButton* button) {
        if (button != nullptr && button->isEnabled() && button->isVisible()) {
            button->click();
        }
        return true;
    };
    if (event.isAutoRepeat()) {
        return false;  // a key held down answers once, not the next question too
    }
    switch (event.key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            return press(onReturn);
        case Qt::Key_Escape:
            return press(onEscape);
        default:
            return false;
    }
}

}  // namespace platform::qt
