#include "platform/linux/qt/agreement/RtfPictures.h"

#include <algorithm>
#include <utility>

namespace platform::qt {

namespace {

int hexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

int size(std::optional<int> value) { return std::clamp(value.value_or(0), 0, 31680); }

double scale(std::optional<int> value) {
    const int percent = value.value_or(100);
    return percent > 0 ? std::min(percent, 1000) / 100.0 : 1;
}

}  // namespace

void RtfPictureData::word(std::string_view word, std::optional<int> value) {
    if (word == "pngblip" || word == "jpegblip") {
        m_known = true;
    } else if (word == "picwgoal") {
        m_picture.width = size(value);
    } else if (word == "pichgoal") {
        m_picture.height = size(value);
    } else if (word == "picscalex") {
        m_scaleX = scale(value);
    } else if (word == "picscaley") {
        m_scaleY = scale(value);
    }
}

void RtfPictureData::digits(std::string_view text) {
    if (!m_known) {
        return;
    }
    for (const char character : text) {
        const int digit = hexDigit(character);
        if (digit < 0) {
            continue;
        }
        if (m_digit < 0) {
            m_digit = digit;
        } else {
            m_picture.bytes.append(static_cast<char>(m_digit * 16 + digit));
            m_digit = -1;
        }
    }
}

void RtfPictureData::bytes(std::string_view bytes) {
    if (m_known) {
        m_picture.bytes.append(bytes.data(), static_cast<qsizetype>(bytes.size()));
    }
}

std::optional<RtfPicture> RtfPictureData::finish() {
    if (!m_known || m_picture.bytes.isEmpty()) {
        return std::nullopt;
    }
    m_picture.width = static_cast<int>(m_picture.width * m_scaleX);
    m_picture.height = static_cast<int>(m_picture.height * m_scaleY);
    return std::exchange(m_picture, {});
}

}  // namespace platform::qt
