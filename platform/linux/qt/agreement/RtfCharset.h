// How the fonts of rich text are encoded.
#pragma once

#include <QByteArrayView>
#include <QString>

namespace platform::qt {

// The code page of a font's character set as a font table names it; 0 when the document's own holds.
int codePageOfFontCharset(int charset);

// Characters of a symbol font, by the byte that picks them; the byte's own character where the font is not one that is
// known by name.
QString decodeSymbols(const QString& fontName, QByteArrayView bytes);

}  // namespace platform::qt
