#include "platform/macos/services/digests/CommonDigests.h"

#include <CommonCrypto/CommonDigest.h>

#include <algorithm>
#include <limits>
#include <new>

namespace platform::macos {

namespace {

// The three calls answer 1 when they have worked.
template <typename Context, std::size_t size, auto init, auto feed, auto end>
class CommonDigest : public Digest {
public:
    CommonDigest() : m_usable(init(&m_context) == 1) {}

    bool update(std::span<const std::byte> bytes) override {
        while (m_usable && !bytes.empty()) {
            const auto piece = bytes.first(std::min<std::size_t>(bytes.size(), std::numeric_limits<CC_LONG>::max()));
            m_usable = feed(&m_context, piece.data(), static_cast<CC_LONG>(piece.size())) == 1;
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
        std::vector<std::byte> digest(size);
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): bytes under another name
        if (end(reinterpret_cast<unsigned char*>(digest.data()), &m_context) != 1) {
            return std::nullopt;
        }
        return digest;
    }

private:
    Context m_context{};
    bool m_usable;
};

using MD5 = CommonDigest<CC_MD5_CTX, CC_MD5_DIGEST_LENGTH, CC_MD5_Init, CC_MD5_Update, CC_MD5_Final>;
using SHA1 = CommonDigest<CC_SHA1_CTX, CC_SHA1_DIGEST_LENGTH, CC_SHA1_Init, CC_SHA1_Update, CC_SHA1_Final>;
using SHA256 = CommonDigest<CC_SHA256_CTX, CC_SHA256_DIGEST_LENGTH, CC_SHA256_Init, CC_SHA256_Update, CC_SHA256_Final>;
using SHA512 = CommonDigest<CC_SHA512_CTX, CC_SHA512_DIGEST_LENGTH, CC_SHA512_Init, CC_SHA512_Update, CC_SHA512_Final>;

template <typename Kind>
std::unique_ptr<Digest> started() {
    return std::unique_ptr<Digest>(new (std::nothrow) Kind);
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
