// The mark that stands beside an alert's text. Decoration: it has nothing to say to a screen reader.
#pragma once

#include <QWidget>

namespace platform::qt {

class AlertIcon : public QWidget {
    Q_OBJECT

public:
    explicit AlertIcon(QWidget* parent = nullptr);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace platform::qt
