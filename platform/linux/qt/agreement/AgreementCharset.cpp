#include "platform/linux/qt/agreement/AgreementCharset.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <string_view>
#include <unordered_set>

namespace platform::qt {

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

std::optional<QString> decodeCharset(const QByteArray& name, QByteArrayView bytes) {
    const QByteArray lower = name.trimmed().toLower();
    static const std::unordered_set<std::string_view> western{"iso-8859-1", "iso8859-1",    "latin1", "us-ascii",
                                                              "ascii",      "windows-1252", "cp1252"};
    if (western.contains(std::string_view(lower))) {
        return decodeWindowsLatin(bytes);
    }
    constexpr qsizetype longest = 40;
    const bool plain = std::all_of(lower.begin(), lower.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_' || c == ':' || c == '.';
    });
    // A text that could be searched for the name is none of the wide encodings.
    if (lower.isEmpty() || !plain || lower.size() > longest || lower.startsWith("utf") || lower.startsWith("ucs")) {
        return std::nullopt;
    }
    Converter converter(lower.toStdString());
    return converter.isOpen() ? std::optional(converter.convert(bytes)) : std::nullopt;
}

}  // namespace platform::qt
