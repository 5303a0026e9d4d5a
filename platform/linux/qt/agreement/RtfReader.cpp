#include "platform/linux/qt/agreement/RtfReader.h"

#include <algorithm>
#include <utility>

#include "platform/linux/qt/agreement/AgreementCharset.h"
#include "platform/linux/qt/agreement/RtfCharset.h"
#include "platform/linux/qt/agreement/RtfFields.h"
#include "platform/linux/qt/agreement/RtfStyles.h"

namespace platform::qt {

namespace {

constexpr std::size_t kDeepest = 2000;
constexpr qsizetype kLongestName = 4096;  // of an instruction, a bookmark, an attachment
constexpr char kAttachmentStandIn = '\xAC';

}  // namespace

RtfReader::RtfReader(std::string_view bytes, const RtfLimits& limits) : m_tokens(bytes), m_body(m_document, limits) {
    m_groups.emplace_back();
}

RtfDocument RtfReader::read() {
    for (RtfToken token = m_tokens.next(); token.kind != RtfToken::Kind::end && !m_body.isFull();
         token = m_tokens.next()) {
        handle(token);
    }
    flushBytes();
    while (m_groups.size() > 1) {
        closeGroup();  // a text that is cut off leaves groups open, a picture or a footnote perhaps
    }
    m_body.finish(group().place);
    m_document.textWidth = m_settings.textWidth();
    m_document.tabDistance = m_settings.tabDistance;
    return std::move(m_document);
}

void RtfReader::handle(const RtfToken& token) {
    if (token.kind != RtfToken::Kind::text && token.kind != RtfToken::Kind::byte) {
        flushBytes();
    }
    switch (token.kind) {
        case RtfToken::Kind::groupOpen:
            openGroup();
            break;
        case RtfToken::Kind::groupClose:
            closeGroup();
            break;
        case RtfToken::Kind::word:
            handleWord(token);
            break;
        case RtfToken::Kind::symbol:
            handleSymbol(token.text.front());
            break;
        case RtfToken::Kind::byte:
            handleByte(static_cast<char>(*token.value));
            break;
        case RtfToken::Kind::text:
            handleText(token.text);
            break;
        case RtfToken::Kind::binary:
            handleBinary(token.text);
            break;
        case RtfToken::Kind::end:
            break;
    }
}

void RtfReader::openGroup() {
    m_fallbackLeft = 0;
    m_starred = false;
    if (m_groups.size() >= kDeepest) {
        ++m_deeperGroups;
        return;
    }
    m_groups.push_back(group());
    group().began = false;
    group().field = false;
}

// A brace too many closes nothing: the text goes on.
void RtfReader::closeGroup() {
    m_fallbackLeft = 0;
    m_starred = false;
    if (m_deeperGroups > 0) {
        --m_deeperGroups;
        return;
    }
    if (m_groups.size() == 1) {
        return;
    }
    if (group().began) {
        endDestination(group().destination);
    }
    if (group().field) {
        m_instructions.pop_back();
    }
    m_groups.pop_back();
}

bool RtfReader::skipFallback() {
    if (m_fallbackLeft == 0) {
        return false;
    }
    --m_fallbackLeft;
    return true;
}

void RtfReader::handleText(std::string_view text) {
    const std::size_t dropped = std::min(text.size(), static_cast<std::size_t>(m_fallbackLeft));
    m_fallbackLeft -= static_cast<int>(dropped);
    text.remove_prefix(dropped);
    if (text.empty() || group().destination == RtfDestination::skipped) {
        return;
    }
    if (group().destination == RtfDestination::picture) {
        m_picture.digits(text);
        return;
    }
    m_afterAttachment = false;
    m_bytes.append(text.data(), static_cast<qsizetype>(text.size()));
}

void RtfReader::handleByte(char byte) {
    const bool standsIn = std::exchange(m_afterAttachment, false) && byte == kAttachmentStandIn;
    if (skipFallback() || standsIn || group().destination == RtfDestination::skipped ||
        group().destination == RtfDestination::picture) {
        return;
    }
    m_bytes.append(byte);
}

void RtfReader::handleBinary(std::string_view bytes) {
    if (!skipFallback() && group().destination == RtfDestination::picture) {
        m_picture.bytes(bytes);
    }
}

void RtfReader::handleSymbol(char symbol) {
    if (symbol == '*') {
        m_starred = true;
        return;
    }
    if (skipFallback()) {
        return;
    }
    switch (symbol) {
        case '\\':
        case '{':
        case '}':
            write(QString(QLatin1Char(symbol)));
            break;
        case '~':
            write(QString(QChar(QChar::Nbsp)));
            break;
        case '-':
            write(QString(QChar(QChar::SoftHyphen)));
            break;
        case '_':
            write(QString(u'\u2011'));
            break;
        case '\t':
            write(QString(u'\t'));
            break;
        case '\r':
        case '\n':
            handleBreak("par");
            break;
        default:
            break;  // marks for indexes and formulas
    }
}

void RtfReader::handleWord(const RtfToken& token) {
    const bool starred = std::exchange(m_starred, false);
    if (skipFallback() || group().destination == RtfDestination::skipped) {
        return;
    }
    if (handleDestination(token.text)) {
        return;
    }
    if (starred) {
        beginDestination(token.text, RtfDestination::skipped);
        return;
    }
    if (token.text == "u") {
        handleUnicode(token.value.value_or(0));
        return;
    }
    switch (group().destination) {
        case RtfDestination::fontTable:
            m_fontTable.word(token.text, token.value);
            break;
        case RtfDestination::colorTable:
            m_colorTable.word(token.text, token.value);
            break;
        case RtfDestination::lists:
            m_body.lists().word(token.text, token.value);
            break;
        case RtfDestination::picture:
            m_picture.word(token.text, token.value);
            break;
        default:
            handleContentWord(token.text, token.value);
            break;
    }
}

bool RtfReader::handleDestination(std::string_view word) {
    if (word == "field" && !group().field) {
        group().field = true;
        m_instructions.emplace_back();
        return true;
    }
    const std::optional<RtfDestination> destination = destinationOfWord(word);
    if (!destination) {
        return false;
    }
    // What would show text has nothing to show inside a table of fonts or an instruction.
    const bool shows = *destination == RtfDestination::body || *destination == RtfDestination::note;
    const bool mayShow = isContent() || group().destination == RtfDestination::shape;
    beginDestination(word, shows && !mayShow ? RtfDestination::skipped : *destination);
    return true;
}

void RtfReader::beginDestination(std::string_view word, RtfDestination destination) {
    group().destination = destination;
    group().began = true;
    if (word == "fldrslt" && !m_instructions.empty()) {
        group().place.link = linkOfInstruction(m_instructions.back());
    } else if (word == "listtext" || word == "pntext") {
        m_body.setMarked();
    }
    switch (destination) {
        case RtfDestination::bookmark:
        case RtfDestination::attachment:
            m_name.clear();
            break;
        case RtfDestination::picture:
            m_picture.begin();
            break;
        case RtfDestination::note:
            group().place.style.script = RtfCharacterStyle::Script::none;
            m_body.addText(QStringView(u" [").toString(), group().place);
            m_noteBegins = true;
            m_noteBreak = false;
            break;
        default:
            break;
    }
}

void RtfReader::endDestination(RtfDestination destination) {
    const RtfPlace& place = group().place;
    switch (destination) {
        case RtfDestination::bookmark:
            m_body.addAnchor(m_name);
            break;
        case RtfDestination::attachment:
            writeAttachment();
            break;
        case RtfDestination::picture:
            if (std::optional<RtfPicture> picture = m_picture.finish()) {
                m_body.addPicture(std::move(*picture), place);
            }
            break;
        case RtfDestination::note:
            m_body.addText(QString(u']'), place);
            break;
        default:
            break;
    }
}

void RtfReader::writeAttachment() {
    const QString name = m_name.trimmed();
    if (!name.isEmpty()) {
        m_body.addPicture({.attachment = name}, group().place);
    }
    m_afterAttachment = true;
}

// Blanks at its beginning and the end of its last paragraph are no part of what a footnote says.
void RtfReader::writeNote(QString text) {
    if (m_noteBegins) {
        while (text.startsWith(u' ')) {
            text.remove(0, 1);
        }
    }
    if (!text.isEmpty()) {
        m_body.addText(m_noteBreak ? u' ' + text : text, group().place);
        m_noteBegins = false;
        m_noteBreak = false;
    }
}

void RtfReader::handleContentWord(std::string_view word, std::optional<int> value) {
    if (word == "uc") {
        // No character takes so many to stand in for it; a text that says so would swallow its own.
        constexpr int most = 16;
        const int count = value.value_or(1);
        group().fallback = count >= 0 && count <= most ? count : 1;
        return;
    }
    if (const QChar character = characterOfWord(word); !character.isNull()) {
        write(QString(character));
        return;
    }
    if (!isContent() || handleBreak(word)) {
        return;
    }
    if (m_settings.word(word, value)) {
        if (word == "deff") {
            group().place.style.font = m_settings.defaultFont;
        }
        return;
    }
    if (group().destination == RtfDestination::note && (word == "plain" || word == "f" || word == "fs")) {
        return;  // it stands in a line of the text, so it looks like that line
    }
    if (applyCharacterWord(group().place.style, word, value)) {
        if (word == "plain") {
            group().place.style.font = m_settings.defaultFont;
        }
        return;
    }
    if (word == "brdrb") {
        group().place.paragraph.ruleBelow = true;
    }
    if (!applyParagraphWord(group().place.paragraph, word, value)) {
        m_body.rows().word(word, value);
    }
}

bool RtfReader::handleBreak(std::string_view word) {
    if (!isContent()) {
        return false;
    }
    const bool ends = word == "par" || word == "nestcell" || word == "sect" || word == "page" || word == "column";
    if (ends && group().destination == RtfDestination::note) {
        m_noteBreak = !m_noteBegins;
    } else if (word == "par" || word == "nestcell") {
        m_body.endParagraph(group().place);
    } else if (ends) {
        m_body.endPage(group().place);
    } else if (word == "cell") {
        m_body.endCell(group().place);
    } else if (word == "row") {
        m_body.endRow(group().place);
    } else {
        return false;
    }
    return true;
}

void RtfReader::handleUnicode(int value) {
    m_fallbackLeft = group().fallback;
    const auto unit = static_cast<char16_t>(static_cast<unsigned>(value));
    // A symbol font's characters lie here, each by its byte.
    if (unit >= 0xF020 && unit <= 0xF0FF && font() != nullptr) {
        const char byte = static_cast<char>(unit - 0xF000);
        write(decodeSymbols(font()->name, QByteArrayView(&byte, 1)));
    } else if (unit != 0) {
        write(QString(QChar(unit)));
    }
}

bool RtfReader::isContent() const {
    return group().destination == RtfDestination::body || group().destination == RtfDestination::note;
}

const RtfFont* RtfReader::font() const {
    const auto found = m_document.fonts.find(group().place.style.font);
    return isContent() && found != m_document.fonts.end() ? &found->second : nullptr;
}

void RtfReader::flushBytes() {
    if (m_bytes.isEmpty()) {
        return;
    }
    const RtfFont* current = font();
    if (current != nullptr && current->codePage == kSymbolCodePage) {
        write(decodeSymbols(current->name, m_bytes));
    } else {
        const bool own = current == nullptr || current->codePage == 0;
        write(decodeCodePage(own ? m_settings.codePage : current->codePage, m_bytes));
    }
    m_bytes.clear();
}

void RtfReader::write(const QString& text) {
    switch (group().destination) {
        case RtfDestination::body:
            m_body.addText(text, group().place);
            break;
        case RtfDestination::note:
            writeNote(text);
            break;
        case RtfDestination::fontTable:
            m_fontTable.text(text);
            break;
        case RtfDestination::colorTable:
            m_colorTable.text(text);
            break;
        case RtfDestination::levelText:
            m_body.lists().levelText(text);
            break;
        case RtfDestination::instruction:
            if (!m_instructions.empty() && m_instructions.back().size() < kLongestName) {
                m_instructions.back() += text.left(kLongestName);
            }
            break;
        case RtfDestination::bookmark:
        case RtfDestination::attachment:
            if (m_name.size() < kLongestName) {
                m_name += text.left(kLongestName);
            }
            break;
        default:
            break;
    }
}

}  // namespace platform::qt
