#include "platform/linux/qt/QtMainThread.h"

#include <QAbstractEventDispatcher>
#include <QBasicTimer>
#include <QCoreApplication>
#include <QEvent>
#include <QThread>

namespace platform::qt {

// Takes one event for each piece of work, so that a nested loop finds the work that its own piece holds up.
class QtMainThread::Receiver : public QObject {
public:
    posix::MainQueue* queue = nullptr;

    static void post(Receiver* receiver) { QCoreApplication::postEvent(receiver, new QEvent(workType())); }

    bool event(QEvent* event) override {
        if (event->type() == workType()) {
            // Work may run a nested loop; without this it would sleep on the events that were posted behind this one.
            QThread::currentThread()->eventDispatcher()->wakeUp();
            queue->serve();
            return true;
        }
        if (event->type() == QEvent::Timer) {
            return true;  // ends a slice
        }
        return QObject::event(event);
    }

private:
    static QEvent::Type workType() {
        static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
        return type;
    }
};

QtMainThread::QtMainThread() : QtMainThread(new Receiver) {}

QtMainThread::QtMainThread(Receiver* receiver)
    : MainQueue([receiver] { Receiver::post(receiver); }), m_receiver(receiver) {
    receiver->queue = this;
}

QtMainThread::~QtMainThread() { delete m_receiver; }

void QtMainThread::runNextEvent(std::chrono::milliseconds slice) {
    QBasicTimer timer;
    timer.start(static_cast<int>(slice.count()), Qt::PreciseTimer, m_receiver);
    QThread::currentThread()->eventDispatcher()->processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    timer.stop();
    // Widgets that are let go by deleteLater inside a loop of this kind would otherwise wait for the outer one.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

}  // namespace platform::qt
