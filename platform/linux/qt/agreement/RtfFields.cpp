#include "platform/linux/qt/agreement/RtfFields.h"

#include <QStringList>

#include "platform/linux/qt/agreement/AgreementLiterals.h"
#include "platform/linux/qt/agreement/AgreementTextDocument.h"

namespace platform::qt {

namespace {

// Words apart by blanks; what stands in quotes is one word, without them.
QStringList wordsOf(const QString& instruction) {
    QStringList words;
    QString word;
    bool quoted = false;
    bool begun = false;
    for (const QChar character : instruction) {
        if (character == u'"') {
            quoted = !quoted;
            begun = true;
        } else if (character.isSpace() && !quoted) {
            if (begun) {
                words.append(word);
            }
            word.clear();
            begun = false;
        } else {
            word.append(character);
            begun = true;
        }
    }
    if (begun) {
        words.append(word);
    }
    return words;
}

}  // namespace

QString linkOfInstruction(const QString& instruction) {
    const QStringList words = wordsOf(instruction);
    if (words.isEmpty() || words.front().compare("HYPERLINK"_L1, Qt::CaseInsensitive) != 0) {
        return {};
    }
    QString address;
    QString place;
    for (qsizetype i = 1; i < words.size(); ++i) {
        const QString& word = words.at(i);
        if (word == "\\l"_L1 && i + 1 < words.size()) {
            place = words.at(++i);
        } else if ((word == "\\o"_L1 || word == "\\t"_L1) && i + 1 < words.size()) {
            ++i;  // a tool tip, a frame
        } else if (!word.startsWith(u'\\') && address.isEmpty()) {
            address = word;
        }
    }
    const QString whole = place.isEmpty() ? address : address + u'#' + place;
    return isAllowedLink(whole) ? whole : QString();
}

}  // namespace platform::qt
