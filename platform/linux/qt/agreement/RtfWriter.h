// Rich text as a text document.
#pragma once

#include <QTextCursor>
#include <QTextTable>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/qt/agreement/AgreementPictures.h"
#include "platform/linux/qt/agreement/RtfFonts.h"
#include "platform/linux/qt/agreement/RtfGrid.h"
#include "platform/linux/qt/agreement/RtfModel.h"

class QTextDocument;

namespace platform::qt {

// Replaces the contents of the document. Attachments are taken from the folder. False when the text is longer than what
// is shown.
bool fillFromRichText(QTextDocument& document, std::string_view bytes, const std::string& folder);

// Writes what was read into a document, from its beginning. One writer writes once; the source must outlive it.
class RtfWriter {
public:
    RtfWriter(QTextDocument& target, const RtfDocument& source, const std::string& folder);

    void write();

private:
    void writeParagraph(const RtfParagraph& paragraph);
    void writeInline(const RtfInline& run);
    void writePicture(const RtfPicture& picture, const QTextCharFormat& style);
    void writeTable(const RtfTable& source, int spaceBelow);
    void writeGrid(const RtfGrid& grid, int spaceBelow);
    void writeCell(QTextTableCell cell, const RtfPlacedCell& placed);
    QTextTableFormat tableFormat(const RtfGrid& grid, int spaceBelow) const;
    void writeRowsAsText(const RtfTable& source);
    QTextBlockFormat blockFormat(const RtfParagraphStyle& style) const;
    void setTabs(QTextBlockFormat& format, const RtfParagraphStyle& style) const;
    const QTextCharFormat& charFormat(const RtfCharacterStyle& style);
    QTextCharFormat makeCharFormat(const RtfCharacterStyle& style);
    const RtfHostFont& fontOf(int number);
    std::optional<QColor> color(int number) const;
    qreal pixels(int twips) const { return twips * m_pixelsPerTwip; }

    const RtfDocument& m_source;
    QTextCursor m_cursor;
    AgreementPictures m_pictures;
    qreal m_pixelsPerTwip;
    bool m_inNewBlock = true;  // the block at the cursor waits to be filled
    int m_spaceAbove = 0;      // that the paragraph before asks for, in twips
    std::map<int, RtfHostFont> m_fonts;
    std::optional<RtfCharacterStyle> m_lastStyle;
    QTextCharFormat m_lastFormat;
};

}  // namespace platform::qt
