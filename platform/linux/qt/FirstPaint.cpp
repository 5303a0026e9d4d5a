#include "platform/linux/qt/FirstPaint.h"

#include <QEvent>
#include <QTimer>
#include <QWidget>
#include <utility>

namespace platform::qt {

namespace {

constexpr int patienceMilliseconds = 500;

class PaintWatch : public QObject {
public:
    PaintWatch(QWidget& window, std::function<void()> painted) : QObject(&window), m_painted(std::move(painted)) {
        window.installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Show) {
            QTimer::singleShot(patienceMilliseconds, this, [this] { call(); });
        } else if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            QMetaObject::invokeMethod(
                this, [this] { call(); }, Qt::QueuedConnection);
        }
        return false;
    }

private:
    void call() {
        if (const auto painted = std::exchange(m_painted, nullptr)) {
            deleteLater();
            painted();
        }
    }

    std::function<void()> m_painted;
};

}  // namespace

void afterFirstPaint(QWidget& window, std::function<void()> painted) { new PaintWatch(window, std::move(painted)); }

}  // namespace platform::qt
