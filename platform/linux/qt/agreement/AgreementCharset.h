// Bytes of the encodings that agreements are written in.
#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace platform::qt {

// Decodes bytes of a code page by its Windows number (1252, 1251, 932, 10000 for Mac Roman, 65001 for UTF-8, ...). One
// that the host does not know is read as 1252. A byte that stands for nothing becomes U+FFFD.
QString decodeCodePage(int codePage, QByteArrayView bytes);

// Decodes by the name that a web page gives of its encoding, as a browser takes it: the Western ones are all
// Windows-1252. None for a name that the host does not know, and for UTF-8 and its kin.
std::optional<QString> decodeCharset(const QByteArray& name, QByteArrayView bytes);

}  // namespace platform::qt
