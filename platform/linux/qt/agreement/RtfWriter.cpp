#include "platform/linux/qt/agreement/RtfWriter.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTextDocument>
#include <QTextTable>
#include <algorithm>
#include <numeric>

#include "platform/linux/qt/agreement/RtfReader.h"

namespace platform::qt {

namespace {

constexpr int kDeepestIndent = 4320;
constexpr int kWidestSpace = 1440;
constexpr int kSpaceBelowTable = 120;

qreal pixelsPerTwip() {
    constexpr qreal twipsPerInch = 1440;
    const QScreen* screen = QGuiApplication::primaryScreen();
    return (screen != nullptr ? screen->logicalDotsPerInchY() : 96) / twipsPerInch;
}

// Print that nobody can read and letters as high as a page are no part of an agreement.
qreal pointSize(int halfPoints) { return std::clamp(halfPoints / 2.0, 7.0, 48.0); }

Qt::Alignment alignmentOf(const RtfParagraphStyle& style) {
    switch (style.alignment) {
        case RtfParagraphStyle::Alignment::right:
            return Qt::AlignRight | Qt::AlignAbsolute;
        case RtfParagraphStyle::Alignment::center:
            return Qt::AlignHCenter;
        case RtfParagraphStyle::Alignment::justified:
            return Qt::AlignJustify;
        case RtfParagraphStyle::Alignment::left:
            break;
    }
    return Qt::AlignLeft | Qt::AlignAbsolute;
}

QTextOption::TabType tabType(RtfTab::Kind kind) {
    switch (kind) {
        case RtfTab::Kind::right:
            return QTextOption::RightTab;
        case RtfTab::Kind::center:
            return QTextOption::CenterTab;
        case RtfTab::Kind::decimal:
            return QTextOption::DelimiterTab;
        case RtfTab::Kind::left:
            break;
    }
    return QTextOption::LeftTab;
}

// Half of a pair alone is no character.
QString wellFormed(QString text) {
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (!text.at(i).isSurrogate()) {
            continue;
        }
        if (text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            ++i;
        } else {
            text[i] = QChar(QChar::ReplacementCharacter);
        }
    }
    return text;
}

void setLineHeight(QTextBlockFormat& format, const RtfParagraphStyle& style, qreal pixelsPerTwip) {
    if (style.lineSpacing == 0) {
        return;
    }
    if (style.lineSpacingFactor) {
        constexpr double single = 240;
        format.setLineHeight(std::clamp(style.lineSpacing / single, 0.8, 3.0) * 100,
                             QTextBlockFormat::ProportionalHeight);
    } else if (style.lineSpacing > 0) {
        format.setLineHeight(std::min(style.lineSpacing, kWidestSpace) * pixelsPerTwip,
                             QTextBlockFormat::MinimumHeight);
    }
    // An exact height would cut through a line of a font that is larger here: it is left to the font.
}

}  // namespace

bool fillFromRichText(QTextDocument& document, std::string_view bytes, const std::string& folder) {
    const RtfDocument source = RtfReader(bytes).read();
    RtfWriter(document, source, folder).write();
    return source.complete;
}

RtfWriter::RtfWriter(QTextDocument& target, const RtfDocument& source, const std::string& folder)
    : m_source(source), m_cursor(&target), m_pictures(target, folder), m_pixelsPerTwip(pixelsPerTwip()) {
    target.clear();
    QTextOption option = target.defaultTextOption();
    option.setTabStopDistance(pixels(source.tabDistance));
    target.setDefaultTextOption(option);
}

void RtfWriter::write() {
    m_cursor.beginEditBlock();
    for (std::size_t i = 0; i < m_source.blocks.size(); ++i) {
        if (const auto* paragraph = std::get_if<RtfParagraph>(&m_source.blocks[i])) {
            writeParagraph(*paragraph);
            continue;
        }
        // A layout drops the space above what follows a table, so the table itself keeps it.
        const RtfBlock* next = i + 1 < m_source.blocks.size() ? &m_source.blocks[i + 1] : nullptr;
        const auto* follower = next != nullptr ? std::get_if<RtfParagraph>(next) : nullptr;
        const int space = follower != nullptr ? std::min(follower->style.spaceBefore, kWidestSpace) : 0;
        writeTable(std::get<RtfTable>(m_source.blocks[i]), std::max(space, kSpaceBelowTable));
    }
    m_cursor.endEditBlock();
}

void RtfWriter::writeParagraph(const RtfParagraph& paragraph) {
    const QTextBlockFormat format = blockFormat(paragraph.style);
    const QTextCharFormat mark =
        charFormat(paragraph.inlines.empty() ? paragraph.mark : paragraph.inlines.front().style);
    if (m_inNewBlock) {
        m_cursor.setBlockFormat(format);
        m_cursor.mergeBlockCharFormat(mark);  // merged: a cell keeps how many rows and columns it spans in there
    } else {
        m_cursor.insertBlock(format, mark);
    }
    m_inNewBlock = false;
    m_spaceAbove = std::min(paragraph.style.spaceAfter, kWidestSpace);
    for (const RtfInline& run : paragraph.inlines) {
        writeInline(run);
    }
}

void RtfWriter::writeInline(const RtfInline& run) {
    QTextCharFormat format = charFormat(run.style);
    if (!run.link.isEmpty()) {
        format.setAnchor(true);
        format.setAnchorHref(run.link);
        format.setFontUnderline(true);
    }
    if (!run.anchor.isEmpty()) {
        format.setAnchor(true);
        format.setAnchorNames({run.anchor});
    }
    if (run.picture) {
        writePicture(*run.picture, format);
    } else {
        m_cursor.insertText(wellFormed(run.text), format);
    }
}

void RtfWriter::writePicture(const RtfPicture& picture, const QTextCharFormat& style) {
    const QSizeF size(pixels(picture.width), pixels(picture.height));
    std::optional<QTextImageFormat> image = picture.attachment.isEmpty() ? m_pictures.add(picture.bytes, size)
                                                                         : m_pictures.addFile(picture.attachment, size);
    if (image) {
        if (style.isAnchor()) {
            image->setAnchor(true);
            image->setAnchorHref(style.anchorHref());
            image->setAnchorNames(style.anchorNames());
        }
        m_cursor.insertImage(*image);
    } else if (!picture.attachment.isEmpty()) {
        m_cursor.insertText(u'[' + picture.attachment + u']', style);
    }
}

QTextBlockFormat RtfWriter::blockFormat(const RtfParagraphStyle& style) const {
    QTextBlockFormat format;
    const int left = std::clamp(style.leftIndent, 0, kDeepestIndent);
    format.setAlignment(alignmentOf(style));
    format.setLeftMargin(pixels(left));
    format.setRightMargin(pixels(std::clamp(style.rightIndent, 0, kDeepestIndent / 2)));
    format.setTextIndent(pixels(std::clamp(style.firstLineIndent, -left, kDeepestIndent)));
    format.setTopMargin(pixels(std::min(style.spaceBefore, kWidestSpace) + m_spaceAbove));
    if (style.rightToLeft) {
        format.setLayoutDirection(Qt::RightToLeft);
    }
    if (const std::optional<QColor> background = color(style.background)) {
        format.setBackground(*background);
    }
    if (style.ruleBelow) {
        format.setProperty(QTextFormat::BlockTrailingHorizontalRulerWidth,
                           QTextLength(QTextLength::PercentageLength, 100));
    }
    setLineHeight(format, style, m_pixelsPerTwip);
    setTabs(format, style);
    return format;
}

// Rich text counts tab stops from the margin of the page, a text layout from where its first line begins. A line that
// hangs has a stop of its own where the others begin.
void RtfWriter::setTabs(QTextBlockFormat& format, const RtfParagraphStyle& style) const {
    const int start = std::max(style.leftIndent + style.firstLineIndent, 0);
    QList<RtfTab> tabs = style.tabs;
    if (style.firstLineIndent < 0) {
        tabs.append({style.leftIndent, RtfTab::Kind::left});
    }
    std::sort(tabs.begin(), tabs.end(), [](const RtfTab& a, const RtfTab& b) { return a.position < b.position; });
    QList<QTextOption::Tab> positions;
    for (const RtfTab& tab : tabs) {
        if (tab.position > start) {
            QTextOption::Tab position(pixels(tab.position - start), tabType(tab.kind));
            if (tab.kind == RtfTab::Kind::decimal) {
                position.delimiter = u'.';
            }
            positions.append(position);
        }
    }
    if (!positions.isEmpty()) {
        format.setTabPositions(positions);
    }
}

const QTextCharFormat& RtfWriter::charFormat(const RtfCharacterStyle& style) {
    if (m_lastStyle != style) {
        m_lastFormat = makeCharFormat(style);
        m_lastStyle = style;
    }
    return m_lastFormat;
}

QTextCharFormat RtfWriter::makeCharFormat(const RtfCharacterStyle& style) {
    QTextCharFormat format;
    const RtfHostFont& font = fontOf(style.font);
    if (!font.families.isEmpty()) {
        format.setFontFamilies(font.families);
    }
    format.setFontFixedPitch(font.fixed);
    format.setFontPointSize(pointSize(style.halfPoints));
    format.setFontWeight(style.bold || font.bold ? QFont::Bold : QFont::Normal);
    format.setFontItalic(style.italic || font.italic);
    format.setFontUnderline(style.underline);
    format.setFontStrikeOut(style.strikeOut);
    if (style.spacing != 0) {
        format.setFontLetterSpacingType(QFont::AbsoluteSpacing);
        format.setFontLetterSpacing(pixels(style.spacing));
    }
    if (style.script != RtfCharacterStyle::Script::none) {
        const bool above = style.script == RtfCharacterStyle::Script::superscript;
        format.setVerticalAlignment(above ? QTextCharFormat::AlignSuperScript : QTextCharFormat::AlignSubScript);
    }
    if (style.capitals != RtfCharacterStyle::Capitals::none) {
        const bool all = style.capitals == RtfCharacterStyle::Capitals::all;
        format.setFontCapitalization(all ? QFont::AllUppercase : QFont::SmallCaps);
    }
    if (const std::optional<QColor> foreground = color(style.color)) {
        format.setForeground(*foreground);
    }
    if (const std::optional<QColor> background = color(style.background)) {
        format.setBackground(*background);
    }
    return format;
}

const RtfHostFont& RtfWriter::fontOf(int number) {
    const auto known = m_fonts.find(number);
    if (known != m_fonts.end()) {
        return known->second;
    }
    const auto source = m_source.fonts.find(number);
    const bool named = source != m_source.fonts.end();
    return m_fonts.emplace(number, named ? hostFont(source->second) : RtfHostFont{}).first->second;
}

std::optional<QColor> RtfWriter::color(int number) const {
    const auto index = static_cast<std::size_t>(number);
    if (number <= 0 || index >= m_source.colors.size() || !m_source.colors[index].isValid()) {
        return std::nullopt;
    }
    return m_source.colors[index];
}

void RtfWriter::writeTable(const RtfTable& source, int spaceBelow) {
    if (const std::optional<RtfGrid> grid = gridOf(source)) {
        writeGrid(*grid, spaceBelow);
    } else {
        writeRowsAsText(source);
    }
}

void RtfWriter::writeRowsAsText(const RtfTable& source) {
    for (const RtfRow& row : source.rows) {
        RtfParagraph line;
        for (const RtfCell& cell : row.cells) {
            for (const RtfParagraph& paragraph : cell.paragraphs) {
                line.inlines.insert(line.inlines.end(), paragraph.inlines.begin(), paragraph.inlines.end());
                line.inlines.push_back({.text = QString(u'\t')});
            }
        }
        writeParagraph(line);
    }
}

void RtfWriter::writeGrid(const RtfGrid& grid, int spaceBelow) {
    if (!m_inNewBlock) {
        m_cursor.insertBlock(QTextBlockFormat(), QTextCharFormat());
    }
    const QTextTableFormat format = tableFormat(grid, spaceBelow);
    QTextTable* table = m_cursor.insertTable(grid.rows, static_cast<int>(grid.widths.size()), format);
    for (const RtfPlacedCell& placed : grid.cells) {
        table->mergeCells(placed.row, placed.column, placed.rows, placed.columns);
    }
    for (const RtfPlacedCell& placed : grid.cells) {
        writeCell(table->cellAt(placed.row, placed.column), placed);
    }
    m_cursor = table->lastCursorPosition();
    m_cursor.movePosition(QTextCursor::NextBlock);
    m_inNewBlock = true;
    m_spaceAbove = 0;
}

QTextTableFormat RtfWriter::tableFormat(const RtfGrid& grid, int spaceBelow) const {
    const int total = std::accumulate(grid.widths.begin(), grid.widths.end(), 0);
    const bool lines =
        std::any_of(grid.cells.begin(), grid.cells.end(), [](const RtfPlacedCell& cell) { return cell.shape.lines; });
    QList<QTextLength> columns;
    for (const int width : grid.widths) {
        columns.append(QTextLength(QTextLength::PercentageLength, 100.0 * width / total));
    }
    QTextTableFormat format;
    format.setBorder(lines ? 1 : 0);
    format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
    format.setBorderCollapse(true);
    format.setCellSpacing(0);
    format.setCellPadding(pixels(90));
    format.setTopMargin(pixels(m_spaceAbove));
    format.setBottomMargin(pixels(spaceBelow));
    const double share = std::clamp(100.0 * total / m_source.textWidth, 40.0, 100.0);
    format.setWidth(QTextLength(QTextLength::PercentageLength, share));
    format.setColumnWidthConstraints(columns);
    return format;
}

void RtfWriter::writeCell(QTextTableCell cell, const RtfPlacedCell& placed) {
    m_cursor = cell.firstCursorPosition();
    m_inNewBlock = true;
    m_spaceAbove = 0;
    for (const RtfParagraph* paragraph : placed.paragraphs) {
        writeParagraph(*paragraph);
    }
    // Last, since the format of a cell's first paragraph is also that of the cell.
    QTextCharFormat format = cell.format();
    if (const std::optional<QColor> background = color(placed.shape.background)) {
        format.setBackground(*background);
    }
    if (placed.shape.vertical != RtfCellShape::Vertical::top) {
        const bool middle = placed.shape.vertical == RtfCellShape::Vertical::middle;
        format.setVerticalAlignment(middle ? QTextCharFormat::AlignMiddle : QTextCharFormat::AlignBottom);
    }
    cell.setFormat(format);
}

}  // namespace platform::qt
