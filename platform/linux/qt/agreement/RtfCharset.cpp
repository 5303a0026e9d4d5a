#include "platform/linux/qt/agreement/RtfCharset.h"

#include <QStringView>

#include "platform/linux/qt/agreement/AgreementLiterals.h"

namespace platform::qt {

namespace {

// The Greek letters of the Symbol font, from 'A' and from 'a' on.
constexpr QStringView kSymbolCapitals = u"ΑΒΧΔΕΦΓΗΙϑΚΛΜΝΟΠΘΡΣΤΥςΩΞΨΖ";
constexpr QStringView kSymbolSmall = u"αβχδεφγηιϕκλμνοπθρστυϖωξψζ";

QChar symbolCharacter(unsigned char byte) {
    if (byte >= 'A' && byte <= 'Z') {
        return kSymbolCapitals[byte - 'A'];
    }
    if (byte >= 'a' && byte <= 'z') {
        return kSymbolSmall[byte - 'a'];
    }
    switch (byte) {
        case 0xA3:
            return u'≤';
        case 0xB0:
            return u'°';
        case 0xB1:
            return u'±';
        case 0xB3:
            return u'≥';
        case 0xB4:
            return u'×';
        case 0xB7:
            return u'•';
        case 0xB9:
            return u'≠';
        case 0xD2:
            return u'®';
        case 0xD3:
            return u'©';
        case 0xD4:
            return u'™';
        case 0xAE:
            return u'→';
        default:
            return QChar(ushort{byte});
    }
}

// The marks that word processors put before the items of a list or into a form.
QChar dingbatCharacter(unsigned char byte) {
    switch (byte) {
        case 0x6C:
        case 0x9F:
        case 0xB7:
            return u'•';
        case 0x6E:
        case 0xA7:
            return u'▪';
        case 0x6F:
        case 0xA8:
            return u'☐';
        case 0x71:
            return u'❑';
        case 0x76:
            return u'❖';
        case 0xD8:
            return u'➢';
        case 0xE0:
        case 0xE8:
            return u'➔';
        case 0xFB:
            return u'✗';
        case 0xFC:
            return u'✓';
        case 0xFE:
            return u'☑';
        default:
            return byte < 0x80 ? QChar(ushort{byte}) : QChar(u'▪');
    }
}

}  // namespace

int codePageOfFontCharset(int charset) {
    switch (charset) {
        case 0:
            return 1252;
        case 77:
            return 10000;
        case 128:
            return 932;
        case 129:
            return 949;
        case 130:
            return 1361;
        case 134:
            return 936;
        case 136:
            return 950;
        case 161:
            return 1253;
        case 162:
            return 1254;
        case 163:
            return 1258;
        case 177:
            return 1255;
        case 178:
            return 1256;
        case 186:
            return 1257;
        case 204:
            return 1251;
        case 222:
            return 874;
        case 238:
            return 1250;
        case 255:
            return 437;
        default:
            return 0;
    }
}

QString decodeSymbols(const QString& fontName, QByteArrayView bytes) {
    const bool dingbats = fontName.contains("dings"_L1, Qt::CaseInsensitive);
    const bool greek = fontName.startsWith("Symbol"_L1, Qt::CaseInsensitive);
    QString text;
    text.reserve(bytes.size());
    for (const char character : bytes) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte <= 0x20) {
            text.append(QChar(ushort{byte}));
        } else if (dingbats) {
            text.append(dingbatCharacter(byte));
        } else {
            text.append(greek ? symbolCharacter(byte) : QChar(ushort{byte}));
        }
    }
    return text;
}

}  // namespace platform::qt
