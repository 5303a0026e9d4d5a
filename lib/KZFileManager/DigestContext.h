// A digest under way, as a value: a copy goes on from where the original stands, and neither knows of the other.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

#include "platform/ports/Digests.h"

namespace KZFileManager {

// Of nothing yet when it is made. One thread at a time; throws nothing.
class DigestContext {
public:
    explicit DigestContext(platform::DigestKind kind);
    DigestContext(const DigestContext& other);
    DigestContext& operator=(const DigestContext& other);
    DigestContext(DigestContext&&) noexcept = default;
    DigestContext& operator=(DigestContext&&) noexcept = default;
    ~DigestContext() = default;

    // False when the host has no such digest or gave up, and when the digest is finished: it then finishes as "".
    bool isUsable() const noexcept { return m_digest != nullptr; }

    void update(std::span<const std::byte> bytes);
    void update(std::string_view text);

    // Two lowercase hexadecimal digits for each byte of the digest. The context is of no use afterwards.
    std::string finish();

private:
    std::unique_ptr<platform::Digest> m_digest;
};

template <platform::DigestKind kind>
class DigestContextOf : public DigestContext {
public:
    DigestContextOf() : DigestContext(kind) {}
};
using MD5Context = DigestContextOf<platform::DigestKind::md5>;
using SHA1Context = DigestContextOf<platform::DigestKind::sha1>;
using SHA256Context = DigestContextOf<platform::DigestKind::sha256>;
using SHA512Context = DigestContextOf<platform::DigestKind::sha512>;

// Finish a copy: the caller's context may go on. 32, 40, 64 and 128 digits.
std::string md5HashWithContext(MD5Context context);
std::string sha1HashWithContext(SHA1Context context);
std::string sha256HashWithContext(SHA256Context context);
std::string sha512HashWithContext(SHA512Context context);

}  // namespace KZFileManager
