// The paragraphs and tables of rich text, put together as they are read.
#pragma once

#include <vector>

#include "platform/linux/qt/agreement/AgreementTextDocument.h"
#include "platform/linux/qt/agreement/RtfHeader.h"
#include "platform/linux/qt/agreement/RtfModel.h"
#include "platform/linux/qt/agreement/RtfRows.h"

namespace platform::qt {

// Bounds of time and memory; a text that goes beyond is read that far and counts as incomplete.
struct RtfLimits {
    qsizetype characters = kMaximumCharacters;
    qsizetype paragraphs = kMaximumParagraphs;
    qsizetype runs = 200'000;
    qsizetype pictures = 500;
    qsizetype cells = 100'000;
};

// The styles that hold at a place in the text, and the address that it links to.
struct RtfPlace {
    RtfCharacterStyle style{};
    RtfParagraphStyle paragraph{};
    QString link{};
};

class RtfBody {
public:
    RtfBody(RtfDocument& document, const RtfLimits& limits) : m_document(document), m_limits(limits) {}

    void addText(QString text, const RtfPlace& place);
    void addPicture(RtfPicture picture, const RtfPlace& place);
    void addAnchor(const QString& name);  // before what is added next

    // The paragraph carries the mark of its list (a bullet, a number) in its text.
    void setMarked() { m_marked = true; }

    void endParagraph(const RtfPlace& place);
    void endPage(const RtfPlace& place);  // ends the paragraph, unless it is empty
    void endCell(const RtfPlace& place);
    void endRow(const RtfPlace& place);
    void finish(const RtfPlace& place);

    bool isFull() const { return !m_document.complete; }
    RtfRows& rows() { return m_rows; }
    RtfLists& lists() { return m_lists; }

private:
    bool takes(qsizetype& allowance, qsizetype count);
    void append(QString text, const RtfPlace& place);
    RtfInline* newRun(const RtfPlace& place);
    void addMark(const RtfPlace& place);
    RtfParagraph takeParagraph(const RtfPlace& place);
    void addRow(RtfRow row);

    RtfDocument& m_document;
    RtfLimits m_limits;
    RtfRows m_rows;
    RtfLists m_lists;
    RtfParagraph m_paragraph;
    QString m_anchor;
    bool m_marked = false;
};

}  // namespace platform::qt
