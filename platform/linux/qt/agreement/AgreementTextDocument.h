// A text document that fetches nothing by itself.
#pragma once

#include <QImage>
#include <QTextDocument>
#include <QUrl>
#include <string>

namespace platform::qt {

// A plain text document asks for every picture and style sheet that its text names, from wherever the name points to.
// This one shows only what it was given.
class AgreementTextDocument : public QTextDocument {
public:
    AgreementTextDocument();

protected:
    QVariant loadResource(int type, const QUrl& name) override;
};

// What is shown of a text, so that a file of any size opens within moments: some five hundred pages.
constexpr qsizetype kMaximumCharacters = 2'000'000;
constexpr qsizetype kMaximumParagraphs = 60'000;

// A last paragraph which says that the document goes on and where the whole of it is.
void appendContinuationNote(QTextDocument& document, const std::string& path);

// Links that may leave the document: http, https, mailto, and places in the document itself ("#name").
bool isAllowedLink(const QString& address);

}  // namespace platform::qt
