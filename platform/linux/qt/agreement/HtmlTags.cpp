#include "platform/linux/qt/agreement/HtmlTags.h"

#include <algorithm>

#include "platform/linux/qt/agreement/AgreementLiterals.h"

namespace platform::qt {

namespace {

bool isNameCharacter(QChar c) { return c.isLetterOrNumber() || c == u'-' || c == u':' || c == u'_'; }

bool isBlank(QChar c) { return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\f'; }

// Where the tag ends, behind its ">"; -1 when it does not. Quotes may hold a ">".
qsizetype endOfTag(QStringView text) {
    QChar quote;
    QChar before;  // the last character that is no blank
    for (qsizetype i = 1; i < text.size(); ++i) {
        const QChar c = text[i];
        if (!quote.isNull()) {
            quote = c == quote ? QChar() : quote;
        } else if ((c == u'"' || c == u'\'') && before == u'=') {
            quote = c;
        } else if (c == u'>') {
            return i + 1;
        }
        before = isBlank(c) ? before : c;
    }
    return -1;
}

QStringView trimmedFront(QStringView text) {
    const auto first = std::find_if_not(text.begin(), text.end(), isBlank);
    return text.sliced(first - text.begin());
}

QStringView takeValue(QStringView& rest) {
    if (rest.startsWith(u'"') || rest.startsWith(u'\'')) {
        const qsizetype end = rest.indexOf(rest.front(), 1);
        const QStringView value = rest.mid(1, end < 0 ? -1 : end - 1);
        rest = end < 0 ? QStringView() : rest.sliced(end + 1);
        return value;
    }
    const auto end = std::find_if(rest.begin(), rest.end(), isBlank);
    const QStringView value = rest.first(end - rest.begin());
    rest = rest.sliced(value.size());
    return value;
}

QList<HtmlAttribute> attributesOf(QStringView rest) {
    constexpr qsizetype most = 256;
    QList<HtmlAttribute> attributes;
    rest = trimmedFront(rest);
    while (!rest.isEmpty() && attributes.size() < most) {
        const auto end =
            std::find_if(rest.begin(), rest.end(), [](QChar c) { return isBlank(c) || c == u'=' || c == u'/'; });
        const qsizetype length = end - rest.begin();
        if (length == 0) {
            rest = trimmedFront(rest.sliced(1));
            continue;
        }
        HtmlAttribute attribute{.name = rest.first(length).toString().toLower()};
        rest = trimmedFront(rest.sliced(length));
        if (rest.startsWith(u'=')) {
            rest = trimmedFront(rest.sliced(1));
            attribute.value = takeValue(rest).toString();
            rest = trimmedFront(rest);
        }
        attributes.append(std::move(attribute));
    }
    return attributes;
}

}  // namespace

const HtmlAttribute* HtmlPiece::attribute(QStringView wanted) const {
    const auto found = std::find_if(attributes.begin(), attributes.end(),
                                    [wanted](const HtmlAttribute& attribute) { return attribute.name == wanted; });
    return found == attributes.end() ? nullptr : &*found;
}

HtmlPiece HtmlTagReader::take(HtmlPiece::Kind kind, qsizetype length) {
    HtmlPiece piece{.kind = kind, .source = m_rest.first(length)};
    m_rest = m_rest.sliced(length);
    return piece;
}

HtmlPiece HtmlTagReader::next() {
    if (!m_rest.startsWith(u'<')) {
        const qsizetype tag = m_rest.indexOf(u'<');
        return take(HtmlPiece::Kind::text, tag < 0 ? m_rest.size() : tag);
    }
    if (m_rest.startsWith("<!--"_L1)) {
        const qsizetype end = m_rest.indexOf("-->"_L1, 4);
        return take(HtmlPiece::Kind::other, end < 0 ? m_rest.size() : end + 3);
    }
    const QChar second = m_rest.size() > 1 ? m_rest[1] : QChar();
    if (second == u'!' || second == u'?') {
        const qsizetype end = m_rest.indexOf(u'>');
        return take(HtmlPiece::Kind::other, end < 0 ? m_rest.size() : end + 1);
    }
    const bool closing = second == u'/';
    const QChar initial = closing && m_rest.size() > 2 ? m_rest[2] : second;
    return initial.isLetter() ? takeTag() : take(HtmlPiece::Kind::text, 1);
}

HtmlPiece HtmlTagReader::takeTag() {
    const qsizetype length = endOfTag(m_rest);
    if (length < 0) {
        return take(HtmlPiece::Kind::other, m_rest.size());
    }
    const bool closing = m_rest[1] == u'/';
    HtmlPiece piece = take(closing ? HtmlPiece::Kind::close : HtmlPiece::Kind::open, length);
    const QStringView inside = piece.source.sliced(closing ? 2 : 1).chopped(1);
    const auto nameEnd = std::find_if_not(inside.begin(), inside.end(), isNameCharacter);
    piece.name = inside.first(nameEnd - inside.begin()).toString().toLower();
    piece.closed = inside.endsWith(u'/');
    if (!closing) {
        piece.attributes = attributesOf(inside.sliced(piece.name.size()));
    }
    return piece;
}

QStringView HtmlTagReader::takeRawText(const QString& name) {
    const QString tag = "</"_L1 + name;
    const qsizetype end = m_rest.indexOf(tag, 0, Qt::CaseInsensitive);
    const QStringView text = end < 0 ? m_rest : m_rest.first(end);
    m_rest = m_rest.sliced(text.size());
    const qsizetype behind = m_rest.indexOf(u'>');
    m_rest = behind < 0 ? QStringView() : m_rest.sliced(behind + 1);
    return text;
}

}  // namespace platform::qt
