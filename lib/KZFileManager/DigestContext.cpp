#include "lib/KZFileManager/DigestContext.h"

#include <array>
#include <cstdint>

#include "platform/ports/Host.h"

namespace KZFileManager {

namespace {

// Each byte as "%02x" shows it.
std::string hexadecimal(std::span<const std::byte> bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const std::byte byte : bytes) {
        const auto value = std::to_integer<unsigned>(byte);
        text += digits[value / 16];
        text += digits[value % 16];
    }
    return text;
}

}  // namespace

DigestContext::DigestContext(platform::DigestKind kind) : m_digest(platform::host().digests->start(kind)) {}

DigestContext::DigestContext(const DigestContext& other)
    : m_digest(other.m_digest ? other.m_digest->copy() : nullptr) {}

DigestContext& DigestContext::operator=(const DigestContext& other) {
    if (this != &other) {
        m_digest = other.m_digest ? other.m_digest->copy() : nullptr;
    }
    return *this;
}

void DigestContext::update(std::span<const std::byte> bytes) {
    if (m_digest && !m_digest->update(bytes)) {
        m_digest.reset();
    }
}

void DigestContext::update(std::string_view text) { update(std::as_bytes(std::span(text))); }

std::string DigestContext::finish() {
    const auto digest = std::move(m_digest);
    const auto bytes = digest ? digest->finish() : std::nullopt;
    return bytes ? hexadecimal(*bytes) : std::string();
}

std::string md5HashWithContext(MD5Context context) { return context.finish(); }

std::string sha1HashWithContext(SHA1Context context) { return context.finish(); }

std::string sha256HashWithContext(SHA256Context context) { return context.finish(); }

std::string sha512HashWithContext(SHA512Context context) { return context.finish(); }

}  // namespace KZFileManager
