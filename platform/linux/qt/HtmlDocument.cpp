#include "platform/linux/qt/HtmlDocument.h"

#include <QTextDocument>

namespace platform::qt {

void fillFromHtml(QTextDocument& document, const QString& html, const std::string& /*folder*/) {
    document.setHtml(html);
}

}  // namespace platform::qt
