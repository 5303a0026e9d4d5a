// A wheel that turns while something goes on, however long it takes. Nothing is drawn while it stands still; its place
// stays reserved.
#pragma once

#include <QBasicTimer>
#include <QProgressBar>

namespace platform::qt {

class Spinner : public QProgressBar {
    Q_OBJECT

public:
    explicit Spinner(QWidget* parent = nullptr);

    void startAnimation();
    void stopAnimation();
    bool isAnimating() const { return m_animating; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void updateTimer();

    QBasicTimer m_timer;
    bool m_animating = false;
    int m_step = 0;
};

}  // namespace platform::qt
