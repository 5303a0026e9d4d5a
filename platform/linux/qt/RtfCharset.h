// Bytes of the code pages that rich text is written in.
#pragma once

#include <QByteArrayView>
#include <QString>

namespace platform::qt {

// Decodes bytes of a code page by its Windows number (1252, 1251, 932, 10000 for Mac Roman, 65001 for UTF-8, ...). One
// that the host does not know is read as 1252. A byte that stands for nothing becomes U+FFFD.
QString decodeCodePage(int codePage, QByteArrayView bytes);

// The code page of a font's character set as a font table names it; 0 when the document's own holds.
int codePageOfFontCharset(int charset);

// Characters of a symbol font, by the byte that picks them; the byte's own character where the font is not one that is
// known by name.
QString decodeSymbols(const QString& fontName, QByteArrayView bytes);

}  // namespace platform::qt
