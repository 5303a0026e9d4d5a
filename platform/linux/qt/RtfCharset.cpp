#include "platform/linux/qt/RtfCharset.h"

#include <iconv.h>

#include <QByteArray>
#include <array>
#include <cerrno>
#include <string>

namespace platform::qt {

using Qt::Literals::StringLiterals::operator""_L1;

namespace {

constexpr int kWindowsLatin = 1252;
constexpr int kUtf8 = 65001;

// 0x80 to 0x9F of code page 1252; the five bytes that it leaves open stand for themselves.
constexpr std::array<char16_t, 32> kWindowsLatinControls{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

QString decodeWindowsLatin(QByteArrayView bytes) {
    QString text(bytes.size(), Qt::Uninitialized);
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        text[i] = QChar(byte >= 0x80 && byte < 0xA0 ? kWindowsLatinControls.at(byte - 0x80U) : char16_t{byte});
    }
    return text;
}

bool isAscii(QByteArrayView bytes) {
    for (const char byte : bytes) {
        if (static_cast<unsigned char>(byte) >= 0x80) {
            return false;
        }
    }
    return true;
}

std::string converterName(int codePage) {
    switch (codePage) {
        case 10000:
            return "MACINTOSH";
        case 10006:
            return "MACGREEK";
        case 10007:
            return "MAC-CYRILLIC";
        case 10029:
            return "MAC-CENTRALEUROPE";
        case 936:
            return "GB18030";
        case 20127:
            return "ASCII";
        case 28591:
            return "ISO-8859-1";
        default:
            return "CP" + std::to_string(codePage);
    }
}

// A conversion descriptor of the host that closes itself.
class Converter {
public:
    explicit Converter(const std::string& name) : m_handle(::iconv_open("UTF-16LE", name.c_str())) {}
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    ~Converter() {
        if (isOpen()) {
            ::iconv_close(m_handle);
        }
    }
    bool isOpen() const {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the host's own sign of failure
        return m_handle != reinterpret_cast<iconv_t>(-1);
    }

    QString convert(QByteArrayView bytes) {
        QByteArray source = bytes.toByteArray();
        char* in = source.data();
        auto left = static_cast<std::size_t>(source.size());
        QString text;
        while (left > 0) {
            std::array<char16_t, 512> units{};
            char* out = reinterpret_cast<char*>(units.data());
            std::size_t room = sizeof units;
            const std::size_t converted = ::iconv(m_handle, &in, &left, &out, &room);
            const int error = errno;
            text.append(QStringView(units.data(), static_cast<qsizetype>((sizeof units - room) / sizeof(char16_t))));
            if (converted == static_cast<std::size_t>(-1) && error != E2BIG) {
                text.append(QChar(QChar::ReplacementCharacter));
                ++in;
                --left;
            }
        }
        return text;
    }

private:
    iconv_t m_handle;
};

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

QString decodeCodePage(int codePage, QByteArrayView bytes) {
    if (isAscii(bytes)) {
        return QString::fromLatin1(bytes);
    }
    if (codePage == kUtf8) {
        return QString::fromUtf8(bytes);
    }
    if (codePage != kWindowsLatin) {
        Converter converter(converterName(codePage));
        if (converter.isOpen()) {
            return converter.convert(bytes);
        }
    }
    return decodeWindowsLatin(bytes);
}

int codePageOfFontCharset(int charset) {
    switch (charset) {
        case 0:
            return kWindowsLatin;
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
