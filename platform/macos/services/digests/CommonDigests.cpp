#include "platform/macos/services/digests/CommonDigests.h"

#include <CommonCrypto/CommonDigest.h>

#include <algorithm>
#include <limits>
#include <new>

namespace platform::macos {

namespace {

struct MD5 {
    using Context = CC_MD5_CTX;
    static constexpr std::size_t size = CC_MD5_DIGEST_LENGTH;
    static constexpr auto init = CC_MD5_Init;
    static constexpr auto update = CC_MD5_Update;
    static constexpr auto final = CC_MD5_Final;
};

struct SHA1 {
    using Context = CC_SHA1_CTX;
    static constexpr std::size_t size = CC_SHA1_DIGEST_LENGTH;
    static constexpr auto init = CC_SHA1_Init;
    static constexpr auto update = CC_SHA1_Update;
    static constexpr auto final = CC_SHA1_Final;
};

struct SHA256 {
    using Context = CC_SHA256_CTX;
    static constexpr std::size_t size = CC_SHA256_DIGEST_LENGTH;
    static constexpr auto init = CC_SHA256_Init;
    static constexpr auto update = CC_SHA256_Update;
    static constexpr auto final = CC_SHA256_Final;
};

struct SHA512 {
    using Context = CC_SHA512_CTX;
    static constexpr std::size_t size = CC_SHA512_DIGEST_LENGTH;
    static constexpr auto init = CC_SHA512_Init;
    static constexpr auto update = CC_SHA512_Update;
    static constexpr auto final = CC_SHA512_Final;
};

// Each call answers 1 when it has worked.
template <typename Kind>
class CommonDigest : public Digest {
public:
    CommonDigest() : m_usable(Kind::init(&m_context) == 1) {}

    bool update(std::span<const std::byte> bytes) override {
        while (m_usable && !bytes.empty()) {
            const auto piece = bytes.first(std::min<std::size_t>(bytes.size(), std::numeric_limits<CC_LONG>::max()));
            m_usable = Kind::update(&m_context, piece.data(), static_cast<CC_LONG>(piece.size())) == 1;
            bytes = bytes.subspan(piece.size());
        }
        return m_usable;
    }

    std::unique_ptr<Digest> copy() const override {
        return std::unique_ptr<Digest>(m_usable ? new (std::nothrow) CommonDigest(*this) : nullptr);
    }

    std::optional<std::vector<std::byte>> finish() override {
        if (!m_usable) {
            return std::nullopt;
        }
        m_usable = false;
        std::vector<std::byte> digest(Kind::size);
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): bytes under another name
        if (Kind::final(reinterpret_cast<unsigned char*>(digest.data()), &m_context) != 1) {
            return std::nullopt;
        }
        return digest;
    }

private:
    typename Kind::Context m_context{};
    bool m_usable;
};

template <typename Kind>
std::unique_ptr<Digest> started() {
    return std::unique_ptr<Digest>(new (std::nothrow) CommonDigest<Kind>);
}

}  // namespace

std::unique_ptr<Digest> CommonDigests::start(DigestKind kind) {
    switch (kind) {
        case DigestKind::md5:
            return started<MD5>();
        case DigestKind::sha1:
            return started<SHA1>();
        case DigestKind::sha256:
            return started<SHA256>();
        case DigestKind::sha512:
            return started<SHA512>();
    }
    return nullptr;
}

}  // namespace platform::macos
