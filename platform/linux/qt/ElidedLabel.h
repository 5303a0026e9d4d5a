// A line of plain text that gives way when there is no room: it ends in "…" and shows the whole text in a tool tip.
#pragma once

#include <QLabel>

namespace platform::qt {

class ElidedLabel : public QLabel {
    Q_OBJECT
    Q_PROPERTY(int keptCharacters READ keptCharacters WRITE setKeptCharacters)

public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    void setPlainText(const QString& text);  // line breaks are shown as blanks
    QString shownText() const;               // as it fits

    // About how many characters stay, at the least, when a neighbour wants the room.
    int keptCharacters() const { return m_keptCharacters; }
    void setKeptCharacters(int count);

    QSize minimumSizeHint() const override;
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    int m_keptCharacters = 4;
};

}  // namespace platform::qt
