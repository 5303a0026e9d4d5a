// Plain text of whatever encoding and line endings, as paragraphs.
#pragma once

#include <QByteArrayView>
#include <QString>

class QTextDocument;

namespace platform::qt {

// Decodes by the byte-order mark (UTF-8, UTF-16 and UTF-32 of both orders); without one UTF-8, and where the bytes are
// not that, Windows-1252. Line endings become line feeds; NULs and other controls that no reader sees go.
// A last character that is cut off is left out.
QString decodePlainText(QByteArrayView bytes);

// Replaces the contents of the document. False when the text is longer than what is shown.
bool fillFromPlainText(QTextDocument& document, const QString& text);

}  // namespace platform::qt
