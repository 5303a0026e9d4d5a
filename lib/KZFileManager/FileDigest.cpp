#include "lib/KZFileManager/FileDigest.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include "lib/KZFileManager/HashPipeline.h"
#include "platform/ports/Host.h"

namespace KZFileManager {

namespace {

// Large enough that the handing over costs nothing, small enough to stay in the processor's cache.
constexpr HashPipeline::Buffers buffers{.count = 8, .size = std::size_t{128} * 1024};

FileDigest failed(const std::string& path, int code) {
    return {.digest = std::nullopt,
            .failure = platform::Error{code, path + ": " + std::generic_category().message(code)}};
}

}  // namespace

FileDigest digestOfFile(const std::string& path, platform::DigestKind kind,
                        const std::function<bool(std::uint64_t bytes)>& shouldContinue) {
    DigestContext context(kind);
    if (!context.isUsable()) {
        return {.digest = std::nullopt, .failure = platform::Error{ENOTSUP, "This system has no such digest"}};
    }
    const auto opened = platform::host().openFiles->openForReading(path);
    if (!opened.file) {
        return failed(path, opened.code);
    }
    HashPipeline pipeline(std::move(context), buffers);
    if (!pipeline.isReady()) {
        return failed(path, ENOMEM);
    }
    std::uint64_t total = 0;
    for (;;) {
        const auto [bytes, code] = opened.file->read(pipeline.nextBuffer());
        if (code == EINTR) {
            continue;
        }
        if (code != 0) {
            return failed(path, code);
        }
        if (bytes == 0) {
            break;
        }
        pipeline.hash(bytes);
        total += bytes;
        if (shouldContinue && !shouldContinue(total)) {
            return {};
        }
    }
    std::string digest = pipeline.finish();
    return digest.empty() ? failed(path, EIO) : FileDigest{.digest = std::move(digest), .failure = {}};
}

}  // namespace KZFileManager
