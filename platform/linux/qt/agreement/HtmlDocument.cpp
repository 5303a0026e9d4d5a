#include "platform/linux/qt/agreement/HtmlDocument.h"

#include <QTextDocument>
#include <algorithm>
#include <optional>
#include <vector>

#include "platform/linux/qt/agreement/AgreementCharset.h"
#include "platform/linux/qt/agreement/AgreementFormats.h"
#include "platform/linux/qt/agreement/AgreementLiterals.h"
#include "platform/linux/qt/agreement/AgreementPictures.h"
#include "platform/linux/qt/agreement/AgreementTextDocument.h"
#include "platform/linux/qt/agreement/HtmlCleaner.h"
#include "platform/linux/qt/agreement/HtmlTags.h"
#include "platform/linux/qt/agreement/PlainTextDocument.h"

namespace platform::qt {

namespace {

constexpr qreal kWidestMargin = 160;
constexpr qreal kWidestTable = 520;

QByteArray namedCharset(QByteArrayView bytes) {
    constexpr qsizetype head = 2048;
    const QByteArray opening = bytes.first(std::min(bytes.size(), head)).toByteArray().toLower();
    const qsizetype at = opening.indexOf("charset=");
    if (at < 0) {
        return {};
    }
    QByteArray name = opening.mid(at + 8, 42);
    if (name.startsWith('"') || name.startsWith('\'')) {
        name.remove(0, 1);
    }
    const auto end =
        std::find_if(name.begin(), name.end(), [](char c) { return QByteArrayView("\"' />;\t\r\n").contains(c); });
    return name.first(end - name.begin());
}

bool hasByteOrderMark(QByteArrayView bytes) {
    return bytes.startsWith("\xEF\xBB\xBF") || bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF") ||
           bytes.startsWith(QByteArrayView("\0\0\xFE\xFF", 4));
}

void boundText(QTextCharFormat& format) {
    if (format.hasProperty(QTextFormat::FontPointSize)) {
        format.setFontPointSize(std::clamp(format.fontPointSize(), 7.0, 48.0));
    }
    if (format.hasProperty(QTextFormat::FontPixelSize)) {
        format.setProperty(QTextFormat::FontPixelSize,
                           std::clamp(format.intProperty(QTextFormat::FontPixelSize), 9, 64));
    }
    if (!format.anchorHref().isEmpty() && !isAllowedLink(format.anchorHref())) {
        format.setAnchorHref(QString());
        format.setFontUnderline(false);
    }
}

void boundParagraph(QTextBlockFormat& format) {
    constexpr int deepest = 8;
    format.setLeftMargin(std::clamp(format.leftMargin(), 0.0, kWidestMargin));
    format.setRightMargin(std::clamp(format.rightMargin(), 0.0, kWidestMargin));
    format.setTopMargin(std::clamp(format.topMargin(), 0.0, kWidestMargin));
    format.setBottomMargin(std::clamp(format.bottomMargin(), 0.0, kWidestMargin));
    format.setTextIndent(std::clamp(format.textIndent(), -format.leftMargin(), kWidestMargin));
    format.setIndent(std::clamp(format.indent(), 0, deepest));
    format.setNonBreakableLines(false);  // a line that does not break is a line that is not read to its end
    if (format.lineHeightType() == QTextBlockFormat::ProportionalHeight) {
        format.setLineHeight(std::clamp(format.lineHeight(), 80.0, 300.0), QTextBlockFormat::ProportionalHeight);
    } else if (format.lineHeightType() != QTextBlockFormat::SingleHeight) {
        format.setLineHeight(std::clamp(format.lineHeight(), 0.0, kWidestMargin), QTextBlockFormat::MinimumHeight);
    }
}

QTextLength boundLength(const QTextLength& length) {
    const bool tooWide = length.type() == QTextLength::FixedLength && length.rawValue() > kWidestTable;
    const bool odd =
        length.type() == QTextLength::PercentageLength && (length.rawValue() > 100 || length.rawValue() < 0);
    return tooWide || odd ? QTextLength(QTextLength::PercentageLength, 100) : length;
}

void boundFrame(QTextFrameFormat& format) {
    constexpr qreal thickest = 8;
    format.setWidth(boundLength(format.width()));
    format.setHeight(QTextLength());
    format.setBorder(std::clamp(format.border(), 0.0, thickest));
    format.setPadding(std::clamp(format.padding(), 0.0, kWidestMargin));
    format.setLeftMargin(std::clamp(format.leftMargin(), 0.0, kWidestMargin));
    format.setRightMargin(std::clamp(format.rightMargin(), 0.0, kWidestMargin));
    format.setTopMargin(std::clamp(format.topMargin(), 0.0, kWidestMargin));
    format.setBottomMargin(std::clamp(format.bottomMargin(), 0.0, kWidestMargin));
    if (format.isTableFormat()) {
        QTextTableFormat table = format.toTableFormat();
        table.setCellPadding(std::clamp(table.cellPadding(), 0.0, kWidestMargin / 4));
        table.setCellSpacing(std::clamp(table.cellSpacing(), 0.0, kWidestMargin / 4));
        QList<QTextLength> columns = table.columnWidthConstraints();
        for (QTextLength& column : columns) {
            column = boundLength(column).type() == column.type() ? column : QTextLength();
        }
        table.setColumnWidthConstraints(columns);
        format = table;
    }
}

// The bytes of a picture that the page carries in its own text.
std::optional<QByteArray> embeddedPicture(const QString& name) {
    if (!name.startsWith("data:image/"_L1, Qt::CaseInsensitive)) {
        return std::nullopt;
    }
    const qsizetype comma = name.indexOf(u',');
    if (comma < 0 || !QStringView(name).first(comma).endsWith("base64"_L1)) {
        return QByteArray();
    }
    return QByteArray::fromBase64(QStringView(name).sliced(comma + 1).toLatin1());
}

// Each picture is looked up here, once; a layout would look for those that it misses wherever their names point to.
class Pictures {
public:
    Pictures(QTextDocument& document, const std::string& folder) : m_document(document), m_pictures(document, folder) {}

    void settle() {
        std::vector<int> positions;
        for (QTextBlock block = m_document.begin(); block.isValid(); block = block.next()) {
            for (auto it = block.begin(); !it.atEnd(); ++it) {
                for (int i = 0; it.fragment().charFormat().isImageFormat() && i < it.fragment().length(); ++i) {
                    positions.push_back(it.fragment().position() + i);
                }
            }
        }
        for (auto position = positions.rbegin(); position != positions.rend(); ++position) {
            settle(*position);
        }
    }

private:
    void settle(int position) {
        QTextCursor cursor(&m_document);
        cursor.setPosition(position);
        cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
        const QTextImageFormat format = cursor.charFormat().toImageFormat();
        const std::optional<QTextImageFormat> found = find(format);
        if (!found) {
            cursor.removeSelectedText();
            return;
        }
        QTextImageFormat settled = format;
        settled.setName(found->name());
        settled.setWidth(found->width());
        settled.setHeight(found->height());
        cursor.setCharFormat(settled);
    }

    std::optional<QTextImageFormat> find(const QTextImageFormat& format) {
        const QSizeF size(std::max(format.width(), 0.0), std::max(format.height(), 0.0));
        if (const std::optional<QByteArray> bytes = embeddedPicture(format.name())) {
            return m_pictures.add(*bytes, size);
        }
        return m_pictures.addFile(QUrl::fromPercentEncoding(format.name().toUtf8()), size);
    }

    QTextDocument& m_document;
    AgreementPictures m_pictures;
};

}  // namespace

QString decodeHtml(QByteArrayView bytes) {
    if (!hasByteOrderMark(bytes)) {
        if (std::optional<QString> text = decodeCharset(namedCharset(bytes), bytes)) {
            return *std::move(text);
        }
    }
    return decodePlainText(bytes);
}

bool fillFromHtml(QTextDocument& document, const QString& html, const std::string& folder) {
    const VisibleHtml visible = visibleHtml(QStringView(html).left(kMaximumCharacters));
    document.setHtml(visible.html);
    QTextCursor edit(&document);
    edit.beginEditBlock();
    Pictures(document, folder).settle();
    changeFrames(*document.rootFrame(), boundFrame, [](QTextCharFormat& /*cell*/) {});
    changeParagraphs(document, boundParagraph);
    changeText(document, boundText);
    edit.endEditBlock();
    return visible.complete && html.size() <= kMaximumCharacters;
}

}  // namespace platform::qt
