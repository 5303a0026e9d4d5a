#include "platform/linux/qt/agreement/HtmlCleaner.h"

#include <QStringList>
#include <algorithm>

#include "platform/linux/qt/agreement/AgreementLiterals.h"
#include "platform/linux/qt/agreement/HtmlTags.h"

namespace platform::qt {

namespace {

using Names = QSet<QString>;

const Names& rawTextElements() {
    static const Names names{u"script"_s, u"style"_s, u"textarea"_s, u"title"_s, u"xmp"_s, u"noembed"_s, u"noframes"_s};
    return names;
}

// What is no text, with all that lies in it.
const Names& droppedElements() {
    static const Names names{u"template"_s, u"iframe"_s,   u"object"_s, u"embed"_s,   u"svg"_s,   u"math"_s,
                             u"video"_s,    u"audio"_s,    u"canvas"_s, u"select"_s,  u"input"_s, u"map"_s,
                             u"applet"_s,   u"frameset"_s, u"dialog"_s, u"datalist"_s};
    return names;
}

// What would lead to other documents.
const Names& droppedTags() {
    static const Names names{u"meta"_s, u"link"_s, u"base"_s, u"frame"_s, u"form"_s, u"param"_s};
    return names;
}

const Names& voidElements() {
    static const Names names{u"area"_s,  u"base"_s, u"br"_s,   u"col"_s,   u"embed"_s,  u"frame"_s, u"hr"_s, u"img"_s,
                             u"input"_s, u"link"_s, u"meta"_s, u"param"_s, u"source"_s, u"track"_s, u"wbr"_s};
    return names;
}

const Names& tableParts() {
    static const Names names{u"tr"_s,    u"td"_s,      u"th"_s,  u"tbody"_s,   u"thead"_s,
                             u"tfoot"_s, u"caption"_s, u"col"_s, u"colgroup"_s};
    return names;
}

// Elements that end, without a tag of their own, where the next of their kind begins.
bool endsBefore(const QString& open, const QString& next) {
    static const Names repeated{u"li"_s, u"tr"_s, u"td"_s, u"th"_s, u"dt"_s, u"dd"_s, u"option"_s, u"p"_s};
    static const Names blocks{u"div"_s, u"ul"_s,         u"ol"_s,      u"table"_s,  u"h1"_s, u"h2"_s,
                              u"h3"_s,  u"h4"_s,         u"h5"_s,      u"h6"_s,     u"hr"_s, u"dl"_s,
                              u"pre"_s, u"blockquote"_s, u"section"_s, u"article"_s};
    return repeated.contains(open) && (open == next || (open == "p"_L1 && blocks.contains(next)));
}

// The declarations of a style, by name; the last of a name holds.
QString declared(QStringView style, QStringView property) {
    QString value;
    const QList<QStringView> declarations = style.split(u';');
    for (const QStringView declaration : declarations) {
        const qsizetype colon = declaration.indexOf(u':');
        if (colon > 0 && declaration.first(colon).trimmed().compare(property, Qt::CaseInsensitive) == 0) {
            value = declaration.sliced(colon + 1).trimmed().toString().toLower();
        }
    }
    return value;
}

bool hides(QStringView style) {
    return declared(style, u"display").startsWith("none"_L1) ||
           declared(style, u"visibility").startsWith("hidden"_L1) ||
           declared(style, u"visibility").startsWith("collapse"_L1);
}

bool isSimple(QStringView selector) {
    return !selector.isEmpty() && std::all_of(selector.begin(), selector.end(), [](QChar c) {
        return c.isLetterOrNumber() || c == u'.' || c == u'#' || c == u'-' || c == u'_';
    });
}

QString withoutComments(QStringView styleSheet) {
    QString text;
    while (!styleSheet.isEmpty()) {
        const qsizetype begin = styleSheet.indexOf("/*"_L1);
        if (begin < 0) {
            text += styleSheet;
            return text;
        }
        text += styleSheet.first(begin);
        const qsizetype end = styleSheet.indexOf("*/"_L1, begin + 2);
        styleSheet = end < 0 ? QStringView() : styleSheet.sliced(end + 2);
    }
    return text;
}

// Behind the brace that closes the block which begins at the front.
qsizetype endOfBlock(QStringView text) {
    int depth = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'{') {
            ++depth;
        } else if (text[i] == u'}' && --depth <= 0) {
            return i + 1;
        }
    }
    return text.size();
}

class Cleaner {
public:
    explicit Cleaner(QStringView html) : m_reader(html) {}

    VisibleHtml clean() {
        while (!m_reader.atEnd()) {
            const HtmlPiece piece = m_reader.next();
            if (piece.kind == HtmlPiece::Kind::open && --m_tagsLeft < 0) {
                m_result.complete = false;
                break;
            }
            if (m_hidden.isEmpty()) {
                visible(piece);
            } else {
                hidden(piece);
            }
        }
        return m_result;
    }

private:
    void visible(const HtmlPiece& piece) {
        if (piece.kind == HtmlPiece::Kind::other) {
            return;
        }
        if (piece.kind == HtmlPiece::Kind::open && rawTextElements().contains(piece.name)) {
            rawText(piece);
            return;
        }
        if (piece.kind == HtmlPiece::Kind::open && (droppedElements().contains(piece.name) || isHidden(piece))) {
            if (!voidElements().contains(piece.name) && !piece.closed) {
                m_hidden.append(piece.name);
            }
            return;
        }
        if (!droppedTags().contains(piece.name) && !isTooDeep(piece)) {
            m_result.html += piece.kind == HtmlPiece::Kind::open ? bounded(piece) : piece.source.toString();
        }
    }

    // Each row and column that a cell spans costs a layout time, whether there is anything in it or not.
    static QString bounded(const HtmlPiece& piece) {
        constexpr int mostSpanned = 64;
        const HtmlAttribute* columns = piece.attribute(u"colspan");
        const HtmlAttribute* rows = piece.attribute(u"rowspan");
        const auto isBounded = [](const HtmlAttribute* span) {
            return span == nullptr || (span->value.size() <= 3 && span->value.toInt() <= mostSpanned);
        };
        if (isBounded(columns) && isBounded(rows)) {
            return breaking(piece.source);
        }
        QString tag = u'<' + piece.name;
        for (const HtmlAttribute& attribute : piece.attributes) {
            const bool drops =
                (&attribute == columns && !isBounded(columns)) || (&attribute == rows && !isBounded(rows));
            if (!drops) {
                tag += u' ' + attribute.name + "=\""_L1 + QString(attribute.value).replace(u'"', "&quot;"_L1) + u'"';
            }
        }
        return tag + u'>';
    }

    // Lines that do not break are lines that nobody reads to their end.
    static QString breaking(QStringView source) {
        return source.toString().replace("nowrap"_L1, "normal"_L1, Qt::CaseInsensitive);
    }

    // A layout goes through what lies in one another by recursion, and slowly. What lies too deep is shown as the text
    // that it holds; an end tag that ends nothing goes too.
    bool isTooDeep(const HtmlPiece& piece) {
        constexpr qsizetype deepest = 48;
        constexpr qsizetype deepestTable = 5;
        if (piece.name == "table"_L1) {
            if (piece.kind == HtmlPiece::Kind::close && m_deepTables > 0) {
                --m_deepTables;
                return true;
            }
            if (piece.kind == HtmlPiece::Kind::open && m_open.count(piece.name) >= deepestTable) {
                ++m_deepTables;
                return true;
            }
        }
        if (m_deepTables > 0 && tableParts().contains(piece.name)) {
            return true;
        }
        if (piece.kind == HtmlPiece::Kind::close) {
            const qsizetype opened = m_open.lastIndexOf(piece.name);
            if (opened >= 0) {
                m_open.resize(opened);
            }
            return opened < 0;
        }
        if (piece.kind != HtmlPiece::Kind::open || voidElements().contains(piece.name)) {
            return false;
        }
        if (!m_open.isEmpty() && endsBefore(m_open.back(), piece.name)) {
            m_open.removeLast();
        }
        const bool tooDeep = m_open.size() >= deepest;
        if (!tooDeep && !piece.closed) {
            m_open.append(piece.name);
        }
        return tooDeep;
    }

    void rawText(const HtmlPiece& piece) {
        const QStringView text = m_reader.takeRawText(piece.name);
        if (piece.name == "style"_L1) {
            m_selectors += hiddenSelectors(text);
            m_result.html += piece.source;
            m_result.html += breaking(text);
            m_result.html += "</style>"_L1;
        }
    }

    // Inside of an element that is hidden: only where it ends matters.
    void hidden(const HtmlPiece& piece) {
        if (piece.kind == HtmlPiece::Kind::open) {
            if (rawTextElements().contains(piece.name)) {
                m_reader.takeRawText(piece.name);
            } else if (m_hidden.size() == 1 && endsBefore(m_hidden.front(), piece.name)) {
                m_hidden.clear();
                visible(piece);
            } else if (!voidElements().contains(piece.name) && !piece.closed && m_hidden.size() < kDeepest) {
                m_hidden.append(piece.name);
            }
            return;
        }
        if (piece.kind != HtmlPiece::Kind::close) {
            return;
        }
        const qsizetype opened = m_hidden.lastIndexOf(piece.name);
        if (opened >= 0) {
            m_hidden.resize(opened);
        } else if (endsWithParent(m_hidden.front())) {
            m_hidden.clear();
            visible(piece);
        }
    }

    static bool endsWithParent(const QString& name) { return endsBefore(name, name); }

    bool isHidden(const HtmlPiece& piece) const {
        if (piece.name == "html"_L1 || piece.name == "body"_L1) {
            return false;  // a page that shows itself by a script
        }
        const HtmlAttribute* style = piece.attribute(u"style");
        if (style != nullptr && hides(style->value)) {
            return true;
        }
        if (piece.attribute(u"hidden") != nullptr) {
            return true;
        }
        const bool shownByStyle = style != nullptr && !declared(style->value, u"display").isEmpty();
        return !shownByStyle && matchesHiddenSelector(piece);
    }

    bool matchesHiddenSelector(const HtmlPiece& piece) const {
        if (m_selectors.isEmpty()) {
            return false;
        }
        if (m_selectors.contains(piece.name)) {
            return true;
        }
        if (const HtmlAttribute* id = piece.attribute(u"id")) {
            const QString selector = u'#' + id->value.toLower();
            if (m_selectors.contains(selector) || m_selectors.contains(piece.name + selector)) {
                return true;
            }
        }
        const HtmlAttribute* classes = piece.attribute(u"class");
        const QStringList names =
            classes == nullptr ? QStringList() : classes->value.toLower().simplified().split(u' ');
        return std::any_of(names.begin(), names.end(), [this, &piece](const QString& name) {
            return m_selectors.contains(u'.' + name) || m_selectors.contains(piece.name + u'.' + name);
        });
    }

    static constexpr qsizetype kDeepest = 256;

    HtmlTagReader m_reader;
    VisibleHtml m_result;
    int m_deepTables = 0;  // open ones that are not shown as such
    int m_tagsLeft = 60'000;
    QStringList m_open;  // elements that are shown
    Names m_selectors;
    QStringList m_hidden;  // the open elements from the hidden one on
};

}  // namespace

QSet<QString> hiddenSelectors(QStringView styleSheet) {
    Names selectors;
    const QString text = withoutComments(styleSheet);
    QStringView rest = text;
    while (true) {
        const qsizetype brace = rest.indexOf(u'{');
        if (brace < 0) {
            return selectors;
        }
        const QStringView prelude = rest.first(brace).trimmed();
        const qsizetype length = endOfBlock(rest.sliced(brace));
        const QStringView block = rest.sliced(brace, length);
        rest = rest.sliced(brace + length);
        if (prelude.startsWith(u'@') || block.size() < 2 || !hides(block.sliced(1).chopped(1))) {
            continue;
        }
        const QList<QStringView> list = prelude.split(u',');
        for (const QStringView selector : list) {
            if (isSimple(selector.trimmed())) {
                selectors.insert(selector.trimmed().toString().toLower());
            }
        }
    }
}

VisibleHtml visibleHtml(QStringView html) { return Cleaner(html).clean(); }

}  // namespace platform::qt
