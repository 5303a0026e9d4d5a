#include "platform/linux/qt/SheetOverlay.h"

#include <QAbstractButton>
#include <QKeyEvent>
#include <QLayout>
#include <QPainter>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <numbers>

#include "platform/linux/qt/AccessibleRoles.h"
#include "platform/linux/qt/AnswerKeys.h"
#include "platform/linux/qt/Appearance.h"

namespace platform::qt {

namespace {

constexpr int slideMilliseconds = 200;
constexpr int shakeMilliseconds = 350;
constexpr int shakes = 3;
constexpr double shakeWidth = 9;
constexpr int sideMargin = 12;
constexpr int bottomMargin = 12;
constexpr int shadow = 10;

bool canTakeFocus(const QWidget& widget) {
    return (widget.focusPolicy() & Qt::TabFocus) != 0 && widget.isEnabled() && widget.isVisible() &&
           widget.focusProxy() == nullptr;
}

}  // namespace

SheetOverlay::SheetOverlay(QWidget& window, QWidget& contents, SheetButtons buttons, QAccessible::Role role)
    : QWidget(&window),
      m_window(window),
      m_contents(&contents),
      m_buttons(buttons),
      m_role(role),
      m_sheet(new QWidget(this)) {
    installAccessibleRoles();
    setAccessibleName(contents.windowTitle());
    setFocusPolicy(Qt::NoFocus);

    if (contents.testAttribute(Qt::WA_Resized)) {
        m_designed = contents.size();
    }
    m_sheet->setAutoFillBackground(true);
    auto* layout = new QVBoxLayout(m_sheet);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(&contents);
    contents.show();

    blockWindow();
    window.installEventFilter(this);
    m_sheet->installEventFilter(this);
    connect(&m_slide, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        m_shown = value.toDouble();
        place();
        update();
    });
    connect(&m_shaking, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        const double done = value.toDouble();
        m_aside = static_cast<int>(shakeWidth * (1 - done) * std::sin(2 * std::numbers::pi * shakes * done));
        place();
        update();
    });
    place();
    raise();
    show();
    slideIn();
    focusInside();
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

SheetOverlay::~SheetOverlay() {
    if (!m_released) {
        unblockWindow();
    }
}

SheetOverlay* SheetOverlay::topmost(const QWidget& window) {
    SheetOverlay* found = nullptr;
    for (auto* sheet : window.findChildren<SheetOverlay*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (!sheet->m_released) {
            found = sheet;  // children stand in the order in which they are stacked
        }
    }
    return found;
}

void SheetOverlay::release() {
    if (m_released) {
        return;
    }
    m_released = true;
    m_slide.stop();
    m_shaking.stop();
    m_window.removeEventFilter(this);
    m_sheet->removeEventFilter(this);
    auto* const above = coveredBy();
    if (above != nullptr) {
        handOver(*above);
    }
    hide();
    if (m_contents) {
        m_contents->hide();
        m_contents->setParent(nullptr);
    }
    unblockWindow();
    if (above == nullptr && m_previousFocus && m_previousFocus->isEnabled()) {
        m_previousFocus->setFocus(Qt::OtherFocusReason);
    }
    deleteLater();
}

SheetOverlay* SheetOverlay::coveredBy() const {
    const auto sheets = m_window.findChildren<SheetOverlay*>(QString(), Qt::FindDirectChildrenOnly);
    const auto found = std::ranges::find_if(sheets, [this](const SheetOverlay* sheet) {
        return std::ranges::find(sheet->m_blocked, this) != sheet->m_blocked.end();
    });
    return found != sheets.end() ? *found : nullptr;
}

// What this sheet blocks stays blocked by the one that covers it.
void SheetOverlay::handOver(SheetOverlay& above) {
    above.m_blocked.insert(above.m_blocked.end(), m_blocked.begin(), m_blocked.end());
    m_blocked.clear();
    if (!above.m_previousFocus || isAncestorOf(above.m_previousFocus)) {
        above.m_previousFocus = m_previousFocus;
    }
}

void SheetOverlay::blockWindow() {
    m_previousFocus = m_window.focusWidget();
    for (auto* child : m_window.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (child != this && !child->isWindow() && !child->testAttribute(Qt::WA_ForceDisabled)) {
            child->setEnabled(false);
            m_blocked.emplace_back(child);
        }
    }
}

void SheetOverlay::unblockWindow() {
    for (const auto& child : m_blocked) {
        if (child) {
            child->setEnabled(true);
        }
    }
    m_blocked.clear();
}

void SheetOverlay::slideIn() {
    if (!animationsWanted(*this)) {
        return;
    }
    m_slide.setStartValue(0.0);
    m_slide.setEndValue(1.0);
    m_slide.setDuration(slideMilliseconds);
    m_slide.setEasingCurve(QEasingCurve::OutCubic);
    m_slide.start();
}

void SheetOverlay::shake() {
    if (!animationsWanted(*this)) {
        return;
    }
    m_shaking.stop();
    m_shaking.setStartValue(0.0);
    m_shaking.setEndValue(1.0);
    m_shaking.setDuration(shakeMilliseconds);
    m_shaking.start();
}

QRect SheetOverlay::sheetGeometry() const {
    const QSize wanted = m_contents ? m_contents->sizeHint().expandedTo(m_designed) : m_designed;
    const int width = std::min(wanted.width(), m_window.width() - 2 * sideMargin);
    int height = wanted.height();
    if (const auto* layout = m_contents ? m_contents->layout() : nullptr; layout && layout->hasHeightForWidth()) {
        height = std::max(layout->totalHeightForWidth(width), m_designed.height());
    }
    height = std::min(height, m_window.height() - bottomMargin);
    return {(m_window.width() - width) / 2, 0, std::max(width, 1), std::max(height, 1)};
}

void SheetOverlay::place() {
    setGeometry(m_window.rect());
    QRect sheet = sheetGeometry();
    sheet.moveTop(-static_cast<int>((1 - m_shown) * (sheet.height() + shadow)));
    sheet.translate(m_aside, 0);
    m_sheet->setGeometry(sheet);
}

void SheetOverlay::focusInside() {
    QWidget* const wanted = m_buttons.focused != nullptr ? m_buttons.focused : m_buttons.onReturn;
    if (wanted != nullptr) {
        wanted->setFocus(Qt::OtherFocusReason);
    }
}

void SheetOverlay::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), QColor(0, 0, 0, static_cast<int>(90 * m_shown)));
    const QRect sheet = m_sheet->geometry();
    painter.setPen(Qt::NoPen);
    for (int ring = shadow; ring > 0; --ring) {
        painter.setBrush(QColor(0, 0, 0, 8));
        painter.drawRoundedRect(sheet.adjusted(-ring, 0, ring, ring), ring, ring);
    }
    painter.fillRect(sheet.adjusted(-1, 0, 1, 1), palette().color(QPalette::Mid));
}

void SheetOverlay::keyPressEvent(QKeyEvent* event) {
    answerByKey(*event, m_buttons.onReturn, m_buttons.onEscape);
    event->accept();  // nothing gets through to the window beneath
}

void SheetOverlay::mousePressEvent(QMouseEvent* event) { event->accept(); }
void SheetOverlay::mouseReleaseEvent(QMouseEvent* event) { event->accept(); }
void SheetOverlay::wheelEvent(QWheelEvent* event) { event->accept(); }
void SheetOverlay::contextMenuEvent(QContextMenuEvent* event) { event->accept(); }

bool SheetOverlay::focusNextPrevChild(bool next) {
    QWidget* const start = m_window.focusWidget() != nullptr ? m_window.focusWidget() : this;
    QWidget* candidate = start;
    do {
        candidate = next ? candidate->nextInFocusChain() : candidate->previousInFocusChain();
        if (isAncestorOf(candidate) && canTakeFocus(*candidate)) {
            candidate->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            return true;
        }
    } while (candidate != start);
    return true;
}

bool SheetOverlay::eventFilter(QObject* watched, QEvent* event) {
    const bool resized = watched == &m_window && event->type() == QEvent::Resize;
    const bool wantsOtherSize = watched == m_sheet && event->type() == QEvent::LayoutRequest;
    if (resized || wantsOtherSize) {
        place();
        update();
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace platform::qt
