// The pictures of an agreement.
#pragma once

#include <QByteArray>
#include <QSizeF>
#include <QTextImageFormat>
#include <optional>
#include <string>

class QTextDocument;

namespace platform::qt {

// Puts pictures into a document. They are decoded once, within bounds: one of more than 16 million pixels, one that is
// damaged and all beyond the first 500 are left out; wide ones are shown smaller, so that they fit a page.
class AgreementPictures {
public:
    AgreementPictures(QTextDocument& document, std::string folder)
        : m_document(document), m_folder(std::move(folder)) {}

    // The size is the one wished for, in pixels; a side of 0 follows from the other or from the picture.
    std::optional<QTextImageFormat> add(const QByteArray& bytes, QSizeF size);

    // From a file in the document's folder or below it, never from elsewhere, through whatever links or "..".
    std::optional<QTextImageFormat> addFile(const QString& name, QSizeF size);

private:
    QTextDocument& m_document;
    std::string m_folder;
    int m_count = 0;
};

}  // namespace platform::qt
