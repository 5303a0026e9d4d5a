// Gives texts, and what else is among them, the height that they need at their width, and scrolls when there is less.
// What has the focus stays in sight.
#pragma once

#include <QScrollArea>

namespace platform::qt {

class TextScroller : public QScrollArea {
    Q_OBJECT

public:
    // `texts` has a layout, and belongs to the scroller from here on. `width` is in pixels, as wide as it would like.
    TextScroller(QWidget* texts, int width);

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override { return {m_width, heightForWidth(m_width)}; }
    QSize minimumSizeHint() const override { return {120, 24}; }

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void chooseScrollBar();
    void keepFocusInSight();
    void keepFocusInSightLater();

    const int m_width;
};

}  // namespace platform::qt
