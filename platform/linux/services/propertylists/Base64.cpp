#include "platform/linux/services/propertylists/Base64.h"

#include <cstdint>

namespace platform::linux_host {

namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

int valueOf(char letter) {
    const auto found = alphabet.find(letter);
    return found == std::string_view::npos ? -1 : static_cast<int>(found);
}

}  // namespace

std::string base64(const PropertyData& data) {
    std::string text;
    text.reserve((data.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < data.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(3, data.size() - i);
        std::uint32_t bits = 0;
        for (std::size_t byte = 0; byte < 3; ++byte) {
            bits = (bits << 8U) | (byte < count ? data[i + byte] : 0U);
        }
        for (std::size_t letter = 0; letter < 4; ++letter) {
            text += letter <= count ? alphabet[(bits >> (18U - 6U * letter)) & 0x3FU] : '=';
        }
    }
    return text;
}

std::optional<PropertyData> dataFromBase64(std::string_view text) {
    PropertyData data;
    data.reserve(text.size() / 4 * 3);
    std::uint32_t bits = 0;
    std::size_t letters = 0;
    std::size_t padding = 0;
    for (const char character : text) {
        if (std::string_view(" \t\r\n").find(character) != std::string_view::npos) {
            continue;
        }
        if (character == '=') {
            ++padding;
            continue;
        }
        const int value = valueOf(character);
        if (value < 0 || padding > 0) {
            return std::nullopt;
        }
        bits = (bits << 6U) | static_cast<std::uint32_t>(value);
        ++letters;
        if (letters % 4 != 1) {
            data.push_back(static_cast<std::uint8_t>(bits >> (6U - 2U * ((letters - 1) % 4))));
        }
    }
    const bool complete = padding == 0 || (letters + padding) % 4 == 0;
    return letters % 4 == 1 || padding > 2 || !complete ? std::nullopt : std::optional(std::move(data));
}

}  // namespace platform::linux_host
