#include "tools/wickfield-media/Reading.h"

#include <QTextDocument>

#include "platform/linux/qt/ImageFile.h"
#include "platform/linux/qt/agreement/AgreementDocument.h"

namespace wickfield_media {

namespace {

using platform::qt::AgreementKind;
// NOLINTNEXTLINE(misc-unused-using-decls): the check does not see literals
using Qt::Literals::StringLiterals::operator""_s;

QString nameOf(AgreementKind kind) {
    return kind == AgreementKind::html ? u"html"_s : kind == AgreementKind::richText ? u"rtf"_s : u"text"_s;
}

QJsonObject refusal(const QString& reason) { return {{u"ok"_s, false}, {u"reason"_s, reason}}; }

}  // namespace

QJsonObject readAgreement(const std::string& path) {
    const auto agreement = platform::qt::loadAgreement(path);
    if (agreement == nullptr) {
        return refusal(u"it is no file that can be read, nor a folder with a text in it"_s);
    }
    int characters = 0;
    int pictures = 0;
    const QString text = agreement->document->toPlainText();
    for (const QChar character : text) {
        pictures += character == QChar::ObjectReplacementCharacter ? 1 : 0;
        characters += character == QChar::ObjectReplacementCharacter || character.isSpace() ? 0 : 1;
    }
    return {{u"ok"_s, true},
            {u"kind"_s, nameOf(agreement->kind)},
            {u"characters"_s, characters},
            {u"pictures"_s, pictures},
            {u"complete"_s, agreement->complete}};
}

QJsonObject readImage(const std::string& path) {
    const auto file = platform::qt::readImageFile(path);
    QJsonObject result =
        file.image.isNull()
            ? refusal(file.whyNot)
            : QJsonObject{{u"ok"_s, true}, {u"width"_s, file.size.width()}, {u"height"_s, file.size.height()}};
    result.insert(u"format"_s, QString::fromLatin1(file.format));
    return result;
}

}  // namespace wickfield_media
