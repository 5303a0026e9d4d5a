#include "platform/linux/qt/PasswordWording.h"

#include <QCoreApplication>
#include <algorithm>

#include "platform/linux/qt/QtText.h"

namespace platform::qt {

namespace {

constexpr qsizetype longestAsker = 100;  // characters, of this and the others
constexpr qsizetype longestName = 200;
constexpr qsizetype longestQuestion = 120;
constexpr qsizetype longestDetails = 400;
constexpr qsizetype longestPiece = 24;  // of a word, without a place where it may be broken

constexpr QChar firstStrongIsolate(0x2068);
constexpr QChar popIsolate(0x2069);
constexpr QChar zeroWidthSpace(0x200B);
constexpr QChar ellipsis(0x2026);

QString translated(const char* text) { return QCoreApplication::translate("PasswordSheet", text); }

bool isDirectionControl(QChar character) {
    const char16_t code = character.unicode();
    return (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

// On one line, without what would turn the text around, cut where it is longer than it may be.
QString plain(const QString& text, qsizetype longest) {
    QString line;
    for (const QChar character : text.left(longest * 4)) {
        const auto category = character.category();
        if (category == QChar::Other_Control || category == QChar::Separator_Line ||
            category == QChar::Separator_Paragraph) {
            line += u' ';
        } else if (!isDirectionControl(character)) {
            line += character;
        }
    }
    line = line.simplified();
    if (line.size() > longest) {
        line.truncate(line[longest - 1].isHighSurrogate() ? longest - 2 : longest - 1);
        line += ellipsis;
    }
    return line;
}

QString isolated(const QString& text) { return firstStrongIsolate + text + popIsolate; }

QString breakable(const QString& text) {
    QString broken;
    qsizetype piece = 0;
    for (const QChar character : text) {
        piece = character.isSpace() ? 0 : piece + 1;
        if (piece > longestPiece && !character.isLowSurrogate() && !character.isMark()) {
            broken += zeroWidthSpace;
            piece = 1;
        }
        broken += character;
    }
    return broken;
}

}  // namespace

QString headline(const QString& asker) {
    return translated("%1 wants to make changes.").arg(breakable(isolated(plain(asker, longestAsker))));
}

QString shownName(const rights::Administrator& administrator) {
    const QString user = plain(toQt(administrator.user), longestName);
    const QString realName = plain(toQt(administrator.realName), longestName);
    const bool hasOtherName = !realName.isEmpty() && realName != user;
    return hasOtherName ? QString::fromLatin1("%1 (%2)").arg(isolated(realName), user) : user;
}

std::string namedUser(const QString& typed, const std::vector<rights::Administrator>& administrators) {
    const auto shown = std::ranges::find(administrators, typed, shownName);
    return shown != administrators.end() ? shown->user : fromQt(typed.trimmed());
}

QString questionLabel(const std::string& question) {
    const QString asked = plain(toQt(question), longestQuestion);
    return asked.isEmpty() ? translated("&Password:") : QString(asked).replace(u'&', QString::fromLatin1("&&"));
}

QString problemText(rights::PasswordRequest::Problem problem) {
    using Problem = rights::PasswordRequest::Problem;
    switch (problem) {
        case Problem::wrongPassword:
            return translated("That password is not right. Try again.");
        case Problem::notAdministrator:
            return translated("That account is not an administrator\u2019s. Name another one.");
        case Problem::lockedOut:
            return translated("No more attempts are possible for now.");
        case Problem::none:
            break;
    }
    return {};
}

QString detailsText(const std::string& details) { return breakable(plain(toQt(details), longestDetails)); }

}  // namespace platform::qt
