// HTML as a text document.
#pragma once

#include <QString>
#include <string>

class QTextDocument;

namespace platform::qt {

// Replaces the contents of the document. Pictures are taken from the folder and from what the text itself carries,
// never from elsewhere; hidden elements and scripts are left out.
void fillFromHtml(QTextDocument& document, const QString& html, const std::string& folder);

}  // namespace platform::qt
