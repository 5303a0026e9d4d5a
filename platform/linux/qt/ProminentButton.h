// The button that Return presses, in the accent colour.
#pragma once

#include <QPushButton>

namespace platform::qt {

class ProminentButton : public QPushButton {
    Q_OBJECT

public:
    explicit ProminentButton(QWidget* parent = nullptr);
    QSize sizeHint() const override;

protected:
    void changeEvent(QEvent* event) override;

private:
    void applyAccent();

    bool m_applying = false;
};

}  // namespace platform::qt
