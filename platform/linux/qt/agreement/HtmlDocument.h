// HTML as a text document.
#pragma once

#include <QByteArrayView>
#include <QString>
#include <string>

class QTextDocument;

namespace platform::qt {

// Decodes by the byte-order mark, else by the encoding that the page names, else as plain text is.
QString decodeHtml(QByteArrayView bytes);

// Replaces the contents of the document. Pictures are taken from the folder and from what the page itself carries,
// never from elsewhere. Hidden elements and scripts are left out; sizes that no window could show are brought into
// bounds. False when the page is longer than what is shown.
bool fillFromHtml(QTextDocument& document, const QString& html, const std::string& folder);

}  // namespace platform::qt
