#include "platform/linux/qt/PasswordField.h"

#include <QApplication>
#include <QClipboard>
#include <QDropEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <algorithm>
#include <array>

namespace platform::qt {

namespace {

constexpr QChar dot(0x2022);

// Text in UTF-8 that is wiped when it goes; never longer than a Secret.
class Encoded {
public:
    // Cut off at the first line break, without control characters and halves of surrogate pairs.
    explicit Encoded(QStringView text) {
        for (qsizetype i = 0; i < text.size() && !isLineBreak(text[i]) && m_fits; ++i) {
            if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
                append(QChar::surrogateToUcs4(text[i], text[i + 1]));
                ++i;
            } else if (!text[i].isSurrogate() && text[i].category() != QChar::Other_Control) {
                append(text[i].unicode());
            }
        }
    }
    ~Encoded() { rights::wipe(m_bytes.data(), m_bytes.size()); }
    Encoded(const Encoded&) = delete;
    Encoded& operator=(const Encoded&) = delete;

    std::string_view view() const { return {m_bytes.data(), m_size}; }
    qsizetype characters() const { return m_characters; }
    bool fits() const { return m_fits; }

private:
    static bool isLineBreak(QChar character) {
        return character == u'\n' || character == u'\r' || character == QChar::LineSeparator ||
               character == QChar::ParagraphSeparator;
    }

    void append(char32_t character) {
        const std::size_t length = character < 0x80 ? 1 : character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
        if (length > m_bytes.size() - m_size) {
            m_fits = false;
            return;
        }
        constexpr std::array<unsigned, 5> marks{0, 0, 0xC0, 0xE0, 0xF0};
        for (std::size_t left = length; left-- > 0; character >>= 6) {
            const auto bits = static_cast<unsigned>(character);
            m_bytes[m_size + left] = static_cast<char>(left == 0 ? marks[length] | bits : 0x80 | (bits & 0x3F));
        }
        m_size += length;
        ++m_characters;
    }

    std::array<char, rights::Secret::capacity> m_bytes{};
    std::size_t m_size = 0;
    qsizetype m_characters = 0;
    bool m_fits = true;
};

// Where the character of that number begins.
std::size_t offsetOf(std::string_view text, qsizetype character) {
    std::size_t offset = 0;
    for (; offset < text.size(); ++offset) {
        const bool begins = (static_cast<unsigned char>(text[offset]) & 0xC0) != 0x80;
        if (begins && character-- == 0) {
            break;
        }
    }
    return offset;
}

qsizetype charactersOf(std::string_view text) {
    return std::ranges::count_if(text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; });
}

// A text that nobody else holds is overwritten. One that is shared belongs to somebody else, to the clipboard say.
void wipeText(QString& text) {
    if (text.isDetached()) {
        rights::wipe(text.data(), static_cast<std::size_t>(text.size()) * sizeof(QChar));
    }
}

bool isTyped(const QKeyEvent& event) {
    const QString text = event.text();
    if (text.isEmpty()) {
        return false;
    }
    if (text[0].category() == QChar::Other_Format) {
        return true;
    }
    // Control together with Alt is the third level of a keyboard.
    const auto modifiers = event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier);
    return modifiers != Qt::ControlModifier &&
           (text[0].isPrint() || text[0].category() == QChar::Other_PrivateUse || text[0].isHighSurrogate());
}

bool isRefused(const QKeyEvent& event) {
    return event.matches(QKeySequence::Copy) || event.matches(QKeySequence::Cut) || event.matches(QKeySequence::Undo) ||
           event.matches(QKeySequence::Redo);
}

}  // namespace

PasswordField::PasswordField(QWidget* parent) : QLineEdit(parent) {
    setEchoMode(Password);
    setDragEnabled(false);
    setTextMargins(4, 0, 4, 0);
    connect(this, &QLineEdit::textChanged, this, &PasswordField::follow);
}

void PasswordField::setEchoed(bool echoed) {
    clear();
    setMaxLength(static_cast<int>(rights::Secret::capacity / (echoed ? 4 : 1)));  // a character may take 4 bytes
    setEchoMode(echoed ? Normal : Password);
}

void PasswordField::insertText(const QString& text) {
    const qsizetype position = hasSelectedText() ? selectionStart() : cursorPosition();
    replace(position, selectionLength(), text);
}

rights::Secret PasswordField::take() {
    rights::Secret taken = std::move(m_secret);
    if (isEchoed()) {
        taken = rights::Secret(Encoded(text()).view());
    }
    clear();
    return taken;
}

// Both the widget's dots and the secret; `position` and `length` count characters.
void PasswordField::replace(qsizetype position, qsizetype length, const QString& text) {
    if (isReadOnly()) {
        return;
    }
    if (isEchoed()) {
        insert(text);
        return;
    }
    const Encoded encoded(text);
    const std::size_t begin = offsetOf(m_secret.view(), position);
    const std::size_t end = offsetOf(m_secret.view(), position + length);
    if (!encoded.fits() || encoded.view().size() > rights::Secret::capacity - (m_secret.size() - (end - begin))) {
        QApplication::beep();
        return;
    }
    m_secret.erase(begin, end - begin);
    m_isFollowing = false;
    if (!m_secret.insert(begin, encoded.view())) {
        m_secret.clear();
        clear();
        QApplication::beep();
    } else {
        insert(QString(encoded.characters(), dot));
    }
    m_isFollowing = true;
}

// The widget has changed its text itself: it removed some of its dots, or was given characters among them.
void PasswordField::follow(const QString& shown) {
    if (!m_isFollowing || isEchoed()) {
        return;
    }
    const qsizetype before = charactersOf(m_secret.view());
    const auto isDot = [](QChar character) { return character == dot; };
    if (std::ranges::all_of(shown, isDot) && shown.size() <= before) {
        const std::size_t begin = offsetOf(m_secret.view(), cursorPosition());
        m_secret.erase(begin, offsetOf(m_secret.view(), cursorPosition() + before - shown.size()) - begin);
        return;
    }
    qsizetype head = std::ranges::find_if_not(shown, isDot) - shown.begin();
    qsizetype tail = 0;
    while (tail < shown.size() - head && isDot(shown[shown.size() - 1 - tail])) {
        ++tail;
    }
    if (head + tail > before) {
        head = tail = 0;  // they are no dots of this field
    }
    QString given = shown.mid(head, shown.size() - head - tail);
    m_isFollowing = false;
    setText(QString(before, dot));
    m_isFollowing = true;
    setSelection(static_cast<int>(head), static_cast<int>(before - head - tail));
    replace(head, before - head - tail, given);
    wipeText(given);
}

void PasswordField::keyPressEvent(QKeyEvent* event) {
    if (isEchoed() || !takeKey(*event)) {
        QLineEdit::keyPressEvent(event);
        return;
    }
    event->accept();
}

// The keys that the widget would put text in by, or take it out. Those that remove text are followed afterwards.
bool PasswordField::takeKey(const QKeyEvent& event) {
    const bool isSelectionPaste =
        event.key() == Qt::Key_Insert && event.modifiers() == (Qt::ControlModifier | Qt::ShiftModifier);
    if (isSelectionPaste || event.matches(QKeySequence::Paste)) {
        paste(isSelectionPaste ? QClipboard::Selection : QClipboard::Clipboard);
        return true;
    }
    if (isTyped(event)) {
        insertText(event.text());
        return true;
    }
    return isRefused(event);
}

// What is still being composed is not shown: it would be readable.
void PasswordField::inputMethodEvent(QInputMethodEvent* event) {
    if (isEchoed()) {
        QLineEdit::inputMethodEvent(event);
        return;
    }
    if (event->replacementLength() > 0) {
        setSelection(cursorPosition() + event->replacementStart(), event->replacementLength());
    }
    if (!event->commitString().isEmpty() || event->replacementLength() > 0) {
        insertText(event->commitString());
    }
    event->accept();
}

void PasswordField::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::MiddleButton && !isEchoed()) {
        if (QApplication::clipboard()->supportsSelection()) {
            setCursorPosition(cursorPositionAt(event->position().toPoint()));
            paste(QClipboard::Selection);
        }
        event->accept();
        return;
    }
    QLineEdit::mouseReleaseEvent(event);
}

void PasswordField::contextMenuEvent(QContextMenuEvent* event) {
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const QMimeData* const offered = QApplication::clipboard()->mimeData();
    menu->addAction(tr("&Paste"), this, [this] { paste(QClipboard::Clipboard); })
        ->setEnabled(!isReadOnly() && offered != nullptr && offered->hasText());
    menu->addAction(tr("&Clear"), this, [this] { clear(); })->setEnabled(!isReadOnly() && !text().isEmpty());
    menu->popup(event->globalPos());
    event->accept();
}

void PasswordField::dropEvent(QDropEvent* event) {
    if (isReadOnly() || !event->mimeData()->hasText()) {
        return;
    }
    deselect();
    setCursorPosition(cursorPositionAt(event->position().toPoint()));
    QString text = event->mimeData()->text();
    insertText(text);
    wipeText(text);
    event->acceptProposedAction();
}

void PasswordField::paste(int clipboardMode) {
    QString text = QApplication::clipboard()->text(static_cast<QClipboard::Mode>(clipboardMode));
    insertText(text);
    wipeText(text);
}

}  // namespace platform::qt
