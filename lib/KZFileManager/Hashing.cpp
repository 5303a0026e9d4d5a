#include "lib/KZFileManager/Hashing.h"

#include <atomic>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <utility>

#include "lib/KZFileManager/ChunkBuffer.h"
#include "lib/KZFileManager/Delegation.h"
#include "lib/KZLog.h"
#include "lib/base/Format.h"
#include "platform/ports/Host.h"

namespace KZFileManager {

namespace {

constexpr std::uint64_t questionInterval = 52428800;  // bytes: 50 MiB

void logToConsole(const char* format, const std::string& path) {
    platform::host().console->log(kz::format(format, path));
}

// Closes not the stream but the descriptor whose number is the low half of the stream's address.
void release(std::FILE* stream) {
    const auto number = static_cast<std::uint32_t>(std::bit_cast<std::uintptr_t>(stream));
    platform::host().openFiles->closeDescriptor(static_cast<int>(number));
}

// Finishes the context on everything that the stream has left.
std::optional<std::string> hashOfStream(std::FILE* stream, const std::string& path, DigestContext context,
                                        const SharedChecksumDelegate& delegate) {
    const ChunkBuffer buffer;
    if (!buffer) {
        KZLog::appendLogAndPrint("Error reading file %@ - out of memory", path);
        return std::nullopt;
    }
    const auto cancelled = std::make_shared<std::atomic<bool>>(false);
    std::uint64_t total = 0;
    for (;;) {
        errno = 0;
        const std::size_t count = std::fread(buffer.bytes().data(), 1, chunkSize, stream);
        if (count == 0 && std::feof(stream) != 0) {
            std::string hash = context.finish();
            return hash.empty() ? std::nullopt : std::optional(std::move(hash));
        }
        if (count == 0 && errno == EINTR) {
            std::clearerr(stream);
            continue;
        }
        if (count == 0) {
            KZLog::appendLogAndPrint("Error reading file %@ - aborting...", path);
            return std::nullopt;
        }
        context.update(buffer.bytes().first(count));
        total += count;
        if (delegate && total % questionInterval == 0 && delegate->checksumShouldContinue) {
            askInBackground("checksumShouldContinue:", cancelled,
                            [delegate, path] { return delegate->checksumShouldContinue(path); });
        }
        if (*cancelled) {
            return std::nullopt;
        }
    }
}

std::optional<std::string> hashForFile(const std::string& path, platform::DigestKind kind,
                                       const SharedChecksumDelegate& given) {
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): an answer may make the caller let go of his own
    const SharedChecksumDelegate delegate = given;
    std::FILE* const stream = platform::host().openFiles->openStream(path);
    if (stream == nullptr) {
        logToConsole("Error: Unable to open destination file %@. Aborting hash verification...", path);
        return std::nullopt;
    }
    std::optional<std::string> hash;
    DigestContext context(kind);
    if (context.isUsable()) {
        hash = hashOfStream(stream, path, std::move(context), delegate);
    } else {
        logToConsole("Error: This system has no digest of the kind wanted for file %@", path);
    }
    release(stream);
    return hash;
}

}  // namespace

std::optional<std::string> md5HashForFile(const std::string& path, const SharedChecksumDelegate& delegate) {
    return hashForFile(path, platform::DigestKind::md5, delegate);
}

std::optional<std::string> sha1HashForFile(const std::string& path, const SharedChecksumDelegate& delegate) {
    return hashForFile(path, platform::DigestKind::sha1, delegate);
}

std::optional<std::string> sha512HashForFile(const std::string& path, const SharedChecksumDelegate& delegate) {
    return hashForFile(path, platform::DigestKind::sha512, delegate);
}

}  // namespace KZFileManager
