// The mark that stands beside an alert's text. Decoration: it has nothing to say to a screen reader.
#pragma once

#include <QWidget>

namespace platform::qt {

class AlertIcon : public QWidget {
    Q_OBJECT

public:
    enum class Mark {
        installation,  // an open box with an arrow into it
        lock,
    };

    explicit AlertIcon(QWidget* parent = nullptr);
    explicit AlertIcon(Mark mark, QWidget* parent = nullptr);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Mark m_mark;
};

}  // namespace platform::qt
