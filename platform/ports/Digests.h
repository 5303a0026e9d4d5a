// Message digests.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace platform {

enum class DigestKind { md5, sha1, sha256, sha512 };  // 16, 20, 32 and 64 bytes

// The digest of what has been fed in so far. One thread at a time; throws nothing.
class Digest {
public:
    virtual ~Digest() = default;

    // False when the host gave up; the digest is of no use from then on.
    virtual bool update(std::span<const std::byte> bytes) = 0;

    // A second one that goes on from here; none when the host gives up or this one is finished.
    virtual std::unique_ptr<Digest> copy() const = 0;

    // At most once, as the last call; none when the host gave up, now or earlier, and at a second call.
    virtual std::optional<std::vector<std::byte>> finish() = 0;
};

// Any thread.
class Digests {
public:
    virtual ~Digests() = default;

    // Of nothing yet; none when the host has no digest of that kind.
    virtual std::unique_ptr<Digest> start(DigestKind kind) = 0;
};

}  // namespace platform
