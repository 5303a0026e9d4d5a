#include "lib/KZTaskEx/Decoding.h"

#include <algorithm>
#include <string_view>

#include "lib/base/Text.h"

namespace kz {

namespace {

std::string fromLatin1(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (const char byte : bytes) {
        appendCharacter(text, static_cast<unsigned char>(byte));
    }
    return text;
}

}  // namespace

std::optional<std::string> decode(std::string bytes, StringEncoding encoding) {
    if (isASCII(bytes) && (encoding == StringEncoding::ascii || encoding == StringEncoding::utf8 ||
                           encoding == StringEncoding::isoLatin1)) {
        return bytes;
    }
    if (encoding == StringEncoding::utf8 && isUTF8(bytes)) {
        return bytes;
    }
    if (encoding == StringEncoding::isoLatin1) {
        return fromLatin1(bytes);
    }
    return std::nullopt;
}

}  // namespace kz
