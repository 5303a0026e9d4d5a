#include "platform/linux/qt/TextScroller.h"

#include <QApplication>
#include <QEvent>
#include <QLayout>

namespace platform::qt {

TextScroller::TextScroller(QWidget* texts, int width) : m_width(width) {
    setWidget(texts);
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    viewport()->setAutoFillBackground(false);
    texts->setAutoFillBackground(false);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    connect(qApp, &QApplication::focusChanged, this, &TextScroller::keepFocusInSight);
}

int TextScroller::heightForWidth(int width) const {
    const auto* const layout = widget()->layout();
    return layout->hasHeightForWidth() ? layout->totalHeightForWidth(width) : layout->totalSizeHint().height();
}

// A bar that is there makes the texts narrower, so that they might need it only because of it.
void TextScroller::chooseScrollBar() {
    setVerticalScrollBarPolicy(heightForWidth(width()) <= height() ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
}

void TextScroller::resizeEvent(QResizeEvent* event) {
    chooseScrollBar();
    QScrollArea::resizeEvent(event);
    keepFocusInSightLater();
}

void TextScroller::keepFocusInSight() {
    if (auto* const focused = QApplication::focusWidget(); focused != nullptr && widget()->isAncestorOf(focused)) {
        const QPoint center = focused->mapTo(widget(), focused->rect().center());
        ensureVisible(center.x(), center.y(), 0, focused->height() / 2 + 1);
    }
}

// The parts move only once the present event is through.
void TextScroller::keepFocusInSightLater() {
    QMetaObject::invokeMethod(this, &TextScroller::keepFocusInSight, Qt::QueuedConnection);
}

bool TextScroller::eventFilter(QObject* watched, QEvent* event) {
    const bool handled = QScrollArea::eventFilter(watched, event);
    if (watched == widget() && event->type() == QEvent::LayoutRequest) {
        chooseScrollBar();
        updateGeometry();  // the texts want another height
    }
    if (watched == widget() && (event->type() == QEvent::LayoutRequest || event->type() == QEvent::Resize)) {
        keepFocusInSightLater();
    }
    return handled;
}

}  // namespace platform::qt
