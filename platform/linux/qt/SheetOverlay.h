// A sheet: contents that slide down over a window, dim the rest of it and block that window only.
//
// While it is up the window's other contents are disabled, so that neither pointer, keyboard, shortcut nor assistive
// technology reaches them; the keyboard stays inside. The focus goes back to where it was when the sheet goes.
// A sheet on a window that has one already covers it; the lower one may go first.
#pragma once

#include <QAccessible>
#include <QPointer>
#include <QVariantAnimation>
#include <QWidget>
#include <vector>

class QAbstractButton;

namespace platform::qt {

struct SheetButtons {
    QAbstractButton* onReturn = nullptr;  // pressed by Return while no button has the focus
    QAbstractButton* onEscape = nullptr;
    QWidget* focused = nullptr;  // has the focus at first; null: the button for Return
};

class SheetOverlay : public QWidget {
    Q_OBJECT

public:
    // Shows the contents, which become a part of the overlay until release().
    SheetOverlay(QWidget& window, QWidget& contents, SheetButtons buttons, QAccessible::Role role);
    ~SheetOverlay() override;

    // Takes the sheet off the window, gives the contents back (hidden, without a parent) and schedules itself for
    // deletion. Once only.
    void release();

    // Shakes the sheet for a moment, as one shakes one's head; nothing when animations are unwanted.
    void shake();

    QRect sheetGeometry() const;  // in the window's coordinates, at rest
    QAccessible::Role role() const { return m_role; }

    // The window's topmost sheet; null when it has none.
    static SheetOverlay* topmost(const QWidget& window);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void blockWindow();
    void unblockWindow();
    SheetOverlay* coveredBy() const;
    void handOver(SheetOverlay& above);
    void slideIn();
    void place();
    void focusInside();

    QWidget& m_window;
    QPointer<QWidget> m_contents;
    SheetButtons m_buttons;
    QAccessible::Role m_role;
    QSize m_designed;  // what a layout file asks for
    QWidget* m_sheet;  // what slides: the contents with their frame
    QVariantAnimation m_slide;
    double m_shown = 1;  // part of the way that the sheet has slid
    QVariantAnimation m_shaking;
    int m_aside = 0;  // pixels that shaking moves the sheet by
    QPointer<QWidget> m_previousFocus;
    std::vector<QPointer<QWidget>> m_blocked;
    bool m_released = false;
};

}  // namespace platform::qt
