#include "platform/linux/qt/agreement/RtfBody.h"

#include <algorithm>
#include <utility>

namespace platform::qt {

// Whether there is room for so much more; the document counts as incomplete from the first refusal on.
bool RtfBody::takes(qsizetype& allowance, qsizetype count) {
    if (allowance < count || isFull()) {
        m_document.complete = false;
        return false;
    }
    allowance -= count;
    return true;
}

RtfInline* RtfBody::newRun(const RtfPlace& place) {
    if (!takes(m_limits.runs, 1)) {
        return nullptr;
    }
    m_paragraph.inlines.push_back(
        {.style = place.style, .link = place.link, .anchor = std::exchange(m_anchor, QString())});
    return &m_paragraph.inlines.back();
}

void RtfBody::addText(QString text, const RtfPlace& place) {
    if (text.isEmpty() || place.style.hidden) {
        return;
    }
    const bool fits = text.size() <= m_limits.characters;
    text.truncate(std::min(text.size(), m_limits.characters));
    if (takes(m_limits.characters, text.size()) && !text.isEmpty()) {
        append(std::move(text), place);
    }
    m_document.complete = m_document.complete && fits;
}

void RtfBody::append(QString text, const RtfPlace& place) {
    if (!m_paragraph.inlines.empty() && m_anchor.isEmpty()) {
        RtfInline& last = m_paragraph.inlines.back();
        if (!last.picture && last.style == place.style && last.link == place.link) {
            last.text += text;
            return;
        }
    }
    if (RtfInline* run = newRun(place)) {
        run->text = std::move(text);
    }
}

void RtfBody::addPicture(RtfPicture picture, const RtfPlace& place) {
    if (place.style.hidden || !takes(m_limits.pictures, 1)) {
        return;
    }
    if (RtfInline* run = newRun(place)) {
        run->picture = std::move(picture);
    }
}

void RtfBody::addAnchor(const QString& name) { m_anchor = name; }

void RtfBody::addMark(const RtfPlace& place) {
    const RtfParagraphStyle& style = place.paragraph;
    if (style.list == 0) {
        return;
    }
    QString mark = m_lists.nextMark(style.list, style.listLevel);
    if (m_marked || mark.isEmpty() || m_paragraph.inlines.empty()) {
        return;
    }
    mark += u'\t';
    RtfInline run{.text = std::move(mark), .style = m_paragraph.inlines.front().style};
    run.style.underline = false;
    m_paragraph.inlines.insert(m_paragraph.inlines.begin(), std::move(run));
}

RtfParagraph RtfBody::takeParagraph(const RtfPlace& place) {
    addMark(place);
    m_marked = false;
    RtfParagraph paragraph = std::exchange(m_paragraph, {});
    paragraph.style = place.paragraph;
    paragraph.mark = place.style;
    return paragraph;
}

void RtfBody::endParagraph(const RtfPlace& place) {
    if (!takes(m_limits.paragraphs, 1)) {
        return;
    }
    if (place.paragraph.inTable) {
        m_rows.addParagraph(takeParagraph(place));
        return;
    }
    if (m_rows.isOpen()) {
        addRow(m_rows.endRow());  // a row that was never ended
    }
    m_document.blocks.emplace_back(takeParagraph(place));
}

void RtfBody::endPage(const RtfPlace& place) {
    if (!m_paragraph.inlines.empty()) {
        endParagraph(place);
    }
}

void RtfBody::endCell(const RtfPlace& place) {
    if (takes(m_limits.paragraphs, 1)) {
        m_rows.addParagraph(takeParagraph(place));
        m_rows.endCell();
    }
}

void RtfBody::endRow(const RtfPlace& place) {
    if (!m_paragraph.inlines.empty()) {
        endCell(place);
    }
    if (m_rows.isOpen()) {
        addRow(m_rows.endRow());
    }
}

void RtfBody::addRow(RtfRow row) {
    if (!takes(m_limits.cells, static_cast<qsizetype>(row.cells.size()))) {
        return;
    }
    if (m_document.blocks.empty() || !std::holds_alternative<RtfTable>(m_document.blocks.back())) {
        m_document.blocks.emplace_back(RtfTable{});
    }
    std::get<RtfTable>(m_document.blocks.back()).rows.push_back(std::move(row));
}

// What was begun is shown even where the allowance for paragraphs is used up.
void RtfBody::finish(const RtfPlace& place) {
    if (m_rows.isOpen()) {
        if (!m_paragraph.inlines.empty()) {
            m_rows.addParagraph(takeParagraph(place));
        }
        addRow(m_rows.endRow());
    } else if (!m_paragraph.inlines.empty()) {
        m_document.blocks.emplace_back(takeParagraph(place));
    }
}

}  // namespace platform::qt
