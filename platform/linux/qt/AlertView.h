// What an alert shows: icon, title, text, an optional "don't show again" box and one to three buttons.
#pragma once

#include <QWidget>
#include <functional>

#include "platform/linux/qt/SheetOverlay.h"
#include "platform/ports/Alerts.h"

class QBoxLayout;
class QCheckBox;
class QPushButton;

namespace platform::qt {

class AlertView : public QWidget {
    Q_OBJECT

public:
    // `answered` gets 1, 0 or -1 for the default, the alternate and the other button.
    AlertView(const AlertContents& contents, std::function<void(long)> answered);

    SheetButtons answerButtons() const;     // Escape: the alternate button
    QPushButton* buttonForClosing() const;  // of a window of its own: the alternate button, or the only one
    QPushButton* button(long code) const;
    QCheckBox* suppressionBox() const { return m_suppression; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QWidget* makeTexts(const AlertContents& contents);
    void addSuppression(QBoxLayout& column, const std::string& key);
    void addButtons(const AlertContents& contents);
    QPushButton* addButton(QPushButton* button, const QString& title, long code);
    int buttonRowWidth() const;

    std::function<void(long)> m_answered;
    QBoxLayout* m_row = nullptr;
    QPushButton* m_default = nullptr;
    QPushButton* m_alternate = nullptr;
    QPushButton* m_other = nullptr;
    QCheckBox* m_suppression = nullptr;
};

}  // namespace platform::qt
