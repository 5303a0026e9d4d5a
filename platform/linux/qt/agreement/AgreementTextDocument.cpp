#include "platform/linux/qt/agreement/AgreementTextDocument.h"

#include <QGuiApplication>
#include <QTextCursor>

#include "platform/linux/qt/QtText.h"
#include "platform/linux/qt/agreement/AgreementLiterals.h"

namespace platform::qt {

AgreementTextDocument::AgreementTextDocument() {
    constexpr qreal margin = 14;
    setUndoRedoEnabled(false);
    setDocumentMargin(margin);
}

QVariant AgreementTextDocument::loadResource(int /*type*/, const QUrl& /*name*/) { return {}; }

void appendContinuationNote(QTextDocument& document, const std::string& path) {
    QTextCursor cursor(&document);
    cursor.movePosition(QTextCursor::End);
    QTextBlockFormat paragraph;
    paragraph.setTopMargin(12);
    cursor.insertBlock(paragraph, QTextCharFormat());
    QTextCharFormat format;
    format.setFontItalic(true);
    cursor.insertText(u"The document is longer than can be shown here. The whole of it is in “%1”."_s.arg(toQt(path)),
                      format);
}

bool isAllowedLink(const QString& address) {
    if (address.startsWith(u'#')) {
        return true;
    }
    const QString scheme = QUrl(address).scheme().toLower();
    return scheme == "http"_L1 || scheme == "https"_L1 || scheme == "mailto"_L1;
}

}  // namespace platform::qt
