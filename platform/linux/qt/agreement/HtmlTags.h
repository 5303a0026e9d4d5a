// HTML, cut into tags and text.
#pragma once

#include <QList>
#include <QString>
#include <QStringView>

namespace platform::qt {

struct HtmlAttribute {
    QString name{};  // lower case
    QString value{};
};

struct HtmlPiece {
    enum class Kind { text, open, close, other };  // other: comments, declarations
    Kind kind = Kind::text;
    QStringView source{};  // as it stands
    QString name{};        // of a tag, lower case
    bool closed = false;   // "<br/>"
    QList<HtmlAttribute> attributes{};

    const HtmlAttribute* attribute(QStringView wanted) const;
};

// The source must outlive the reader and its pieces. A "<" that begins no tag is text; a tag that is cut off is other.
class HtmlTagReader {
public:
    explicit HtmlTagReader(QStringView html) : m_rest(html) {}

    bool atEnd() const { return m_rest.isEmpty(); }
    HtmlPiece next();

    // What stands before the end tag of an element that holds no tags, such as a script; takes the end tag too.
    QStringView takeRawText(const QString& name);

private:
    HtmlPiece take(HtmlPiece::Kind kind, qsizetype length);
    HtmlPiece takeTag();

    QStringView m_rest;
};

}  // namespace platform::qt
