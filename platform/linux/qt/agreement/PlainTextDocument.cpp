#include "platform/linux/qt/agreement/PlainTextDocument.h"

#include <QStringDecoder>
#include <QTextDocument>
#include <algorithm>
#include <array>
#include <optional>

#include "platform/linux/qt/agreement/AgreementCharset.h"
#include "platform/linux/qt/agreement/AgreementLiterals.h"
#include "platform/linux/qt/agreement/AgreementTextDocument.h"

namespace platform::qt {

namespace {

struct ByteOrderMark {
    QByteArrayView bytes;
    QStringConverter::Encoding encoding;
};

// UTF-32 first: its little-endian mark opens with that of UTF-16.
const std::array<ByteOrderMark, 5>& byteOrderMarks() {
    static const std::array<ByteOrderMark, 5> marks{{
        {QByteArrayView("\xFF\xFE\0\0", 4), QStringConverter::Utf32LE},
        {QByteArrayView("\0\0\xFE\xFF", 4), QStringConverter::Utf32BE},
        {QByteArrayView("\xEF\xBB\xBF", 3), QStringConverter::Utf8},
        {QByteArrayView("\xFF\xFE", 2), QStringConverter::Utf16LE},
        {QByteArrayView("\xFE\xFF", 2), QStringConverter::Utf16BE},
    }};
    return marks;
}

QString decode(QByteArrayView bytes) {
    for (const ByteOrderMark& mark : byteOrderMarks()) {
        if (bytes.startsWith(mark.bytes)) {
            QStringDecoder decoder(mark.encoding);
            return decoder.decode(bytes.sliced(mark.bytes.size()));
        }
    }
    QStringDecoder utf8(QStringConverter::Utf8);
    QString text = utf8.decode(bytes);
    return utf8.hasError() ? decodeCodePage(1252, bytes) : text;
}

bool isInvisible(QChar character) {
    const char16_t unit = character.unicode();
    return (unit < 0x20 && unit != u'\t' && unit != u'\n') || unit == 0x7F || unit == 0xFEFF || unit == 0xFFFE ||
           unit == 0xFFFF;
}

}  // namespace

QString decodePlainText(QByteArrayView bytes) {
    QString text = decode(bytes);
    text.replace("\r\n"_L1, "\n"_L1);
    text.replace(u'\r', u'\n');
    text.replace(u'\f', u'\n');
    text.removeIf(isInvisible);
    return text;
}

bool fillFromPlainText(QTextDocument& document, const QString& text) {
    QStringView shown = QStringView(text).left(kMaximumCharacters);
    qsizetype end = 0;
    for (qsizetype paragraph = 0; paragraph < kMaximumParagraphs && end >= 0; ++paragraph) {
        end = shown.indexOf(u'\n', end == 0 && paragraph == 0 ? 0 : end + 1);
    }
    shown = end >= 0 ? shown.first(end) : shown;
    document.setPlainText(shown.toString());
    return shown.size() == text.size();
}

}  // namespace platform::qt
