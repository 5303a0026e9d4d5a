// The agreement that a user reads before installing, as a document for a text view.
#pragma once

#include <QTextDocument>
#include <memory>
#include <string>

#include "platform/linux/qt/agreement/AgreementFile.h"
#include "platform/ports/Controls.h"

class QPalette;

namespace platform::qt {

// A document is bound to the thread that loads it: the main thread, where it is also shown and destroyed.
class AgreementDocument : public platform::Document {
public:
    explicit AgreementDocument(std::unique_ptr<QTextDocument> text) : document(std::move(text)) {}

    AgreementKind kind = AgreementKind::plainText;
    bool complete = true;                     // false when the text goes on behind what is shown
    std::unique_ptr<QTextDocument> document;  // never null when loaded; a view that shows it does not own it
};

// Reads an agreement by the kind of its file: rich text (rtf), rich text with attachments (a folder that holds
// "TXT.rtf", as rtfd has), HTML (html, htm, xhtml), else plain text. Contents that open like rich text or HTML go
// before an extension that says neither.
//
// None when nothing can be read there: missing, refused, or something that is neither a file nor such a folder (a pipe
// or a device is never waited for). A damaged file gives the part of it that can be read; an empty one gives an empty
// document.
// Blocks while it reads. A file is read up to 64 MiB and shown up to 2 million characters and 60,000 paragraphs; a
// longer text ends with a line that says so. Nothing is fetched from a network: pictures come from the file itself or
// from its own folder.
std::unique_ptr<AgreementDocument> loadAgreement(const std::string& path);

// Gives the text the palette's own text colour, whatever colours the document brought along. Links get a colour that
// keeps a contrast of 4.5:1 on the palette's base. Backgrounds and highlights on which text or links would fall below
// that contrast are taken away; lines around and in tables take a shade of the text. To be called again when the
// palette changes.
void applyStandardTextColor(QTextDocument& document, const QPalette& palette);

}  // namespace platform::qt
