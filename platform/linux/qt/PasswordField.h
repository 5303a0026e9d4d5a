// A line for a password. The widget's own text is only as many dots as characters were typed: what was typed lies in
// one Secret.
#pragma once

#include <QLineEdit>

#include "platform/linux/rights/Secret.h"

namespace platform::qt {

// A character is a Unicode code point. Keys, pasting, dropping, input methods and assistive technology put text in; of
// a text of several lines the first is taken, and control characters are left out. Nothing is copied, cut, dragged out
// or undone. What would make the password longer than a Secret holds is refused whole, with a beep.
class PasswordField : public QLineEdit {
    Q_OBJECT

public:
    explicit PasswordField(QWidget* parent = nullptr);

    // Whether what is typed is shown, as for a code that is good for once; what the widget shows is then not wiped.
    // Clears the field.
    void setEchoed(bool echoed);

    // Replaces what is selected, else goes in at the cursor.
    void insertText(const QString& text);

    // Gives away what was typed and clears the field.
    rights::Secret take();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    bool isEchoed() const { return echoMode() == Normal; }
    bool takeKey(const QKeyEvent& event);
    void paste(int clipboardMode);
    void follow(const QString& shown);
    void replace(qsizetype position, qsizetype length, const QString& text);

    rights::Secret m_secret;
    bool m_isFollowing = true;  // false while this class itself changes what the widget shows
};

}  // namespace platform::qt
