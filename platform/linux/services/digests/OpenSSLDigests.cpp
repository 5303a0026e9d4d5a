#include "platform/linux/services/digests/OpenSSLDigests.h"

#include <openssl/evp.h>

#include <new>
#include <utility>

namespace platform::linux_host {

namespace {

struct FreeContext {
    void operator()(EVP_MD_CTX* context) const noexcept { EVP_MD_CTX_free(context); }
};
using Context = std::unique_ptr<EVP_MD_CTX, FreeContext>;

const char* nameOf(DigestKind kind) {
    switch (kind) {
        case DigestKind::md5:
            return "MD5";
        case DigestKind::sha1:
            return "SHA1";
        case DigestKind::sha256:
            return "SHA256";
        case DigestKind::sha512:
            return "SHA512";
    }
    return "";
}

// Fetched once and kept: looking an algorithm up by its name takes longer than hashing a small file.
const EVP_MD* algorithm(DigestKind kind) {
    const auto fetch = [](DigestKind wanted) { return EVP_MD_fetch(nullptr, nameOf(wanted), "-fips"); };
    static const EVP_MD* const fetched[] = {fetch(DigestKind::md5), fetch(DigestKind::sha1), fetch(DigestKind::sha256),
                                            fetch(DigestKind::sha512)};
    const auto index = static_cast<std::size_t>(kind);
    return index < std::size(fetched) ? fetched[index] : nullptr;
}

class OpenSSLDigest : public Digest {
public:
    explicit OpenSSLDigest(Context context) : m_context(std::move(context)) {}

    bool update(std::span<const std::byte> bytes) override {
        if (m_context && EVP_DigestUpdate(m_context.get(), bytes.data(), bytes.size()) != 1) {
            m_context.reset();
        }
        return m_context != nullptr;
    }

    std::unique_ptr<Digest> copy() const override {
        Context second(EVP_MD_CTX_new());
        if (!m_context || !second || EVP_MD_CTX_copy_ex(second.get(), m_context.get()) != 1) {
            return nullptr;
        }
        return std::unique_ptr<Digest>(new (std::nothrow) OpenSSLDigest(std::move(second)));
    }

    std::optional<std::vector<std::byte>> finish() override {
        const Context context = std::move(m_context);
        std::vector<std::byte> digest(EVP_MAX_MD_SIZE);
        unsigned size = 0;
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): bytes under another name
        if (!context ||
            EVP_DigestFinal_ex(context.get(), reinterpret_cast<unsigned char*>(digest.data()), &size) != 1) {
            return std::nullopt;
        }
        digest.resize(size);
        return digest;
    }

private:
    Context m_context;  // none once it is finished or of no use
};

}  // namespace

std::unique_ptr<Digest> OpenSSLDigests::start(DigestKind kind) {
    const EVP_MD* const type = algorithm(kind);
    Context context(EVP_MD_CTX_new());
    if (type == nullptr || !context || EVP_DigestInit_ex2(context.get(), type, nullptr) != 1) {
        return nullptr;
    }
    return std::unique_ptr<Digest>(new (std::nothrow) OpenSSLDigest(std::move(context)));
}

}  // namespace platform::linux_host
