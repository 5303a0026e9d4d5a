#include "lib/KZFileManager/Copying.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <new>
#include <optional>
#include <span>
#include <utility>

#include "lib/KZFileManager/CopyDestinations.h"
#include "lib/KZFileManager/CopyVerification.h"
#include "lib/KZFileManager/Delegation.h"
#include "lib/KZFileManager/HashPipeline.h"
#include "lib/KZFileManager/Queries.h"
#include "lib/KZLog.h"
#include "lib/base/Format.h"
#include "lib/base/PathText.h"
#include "platform/ports/Host.h"

namespace KZFileManager {

namespace {

constexpr std::uint64_t leastInterval = 20971520;  // bytes: 20 MiB
constexpr std::uint64_t mostReports = 500;         // of a file for which that is too little

// How many chunks there is memory for: two, and more when another thread hashes those that are written.
constexpr std::size_t plainChunks = 2;
constexpr std::size_t hashedChunks = 16;

std::optional<platform::DigestKind> digestKind(FileCopyVerification type) {
    switch (type) {
        case FileCopyVerification::md5:
            return platform::DigestKind::md5;
        case FileCopyVerification::sha1:
            return platform::DigestKind::sha1;
        case FileCopyVerification::sha256:
            return platform::DigestKind::sha256;
        case FileCopyVerification::sha512:
            return platform::DigestKind::sha512;
        case FileCopyVerification::none:
            break;
    }
    return std::nullopt;
}

std::uint64_t progressInterval(std::uint64_t size) {
    return std::max(leastInterval, size / mostReports + (size % mostReports != 0 ? 1 : 0));
}

// What background threads are given is never changed: later settings are another object.
using SharedSettings = std::shared_ptr<const FileCopySettings>;

class FileCopy {
public:
    FileCopy(std::string source, FileCopyVerification verification, SharedFileCopyDelegate delegate,
             SharedSettings settings)
        : m_sourcePath(std::move(source)),
          m_digestKind(digestKind(verification)),
          m_delegate(std::move(delegate)),
          m_settings(std::move(settings)) {}

    bool run(const std::vector<std::string>& destinations);

private:
    bool openFiles(const std::vector<std::string>& destinations);
    bool copyContents(HashPipeline& pipeline);
    void reportProgress();
    void compareSizes();
    void verify(std::string sourceDigest);
    bool complete();

    const std::string m_sourcePath;
    const std::optional<platform::DigestKind> m_digestKind;
    const SharedFileCopyDelegate m_delegate;
    SharedSettings m_settings;

    std::unique_ptr<platform::OpenFile> m_source;
    std::uint64_t m_sourceSize = 0;
    CopyDestinations m_destinations;
    std::vector<bool> m_good;  // for each destination, whether nothing is known against it
    std::uint64_t m_total = 0;
    std::uint64_t m_interval = leastInterval;
    std::uint64_t m_nextReport = leastInterval;
    const CancelFlag m_cancelled = std::make_shared<std::atomic<bool>>(false);
};

bool FileCopy::run(const std::vector<std::string>& destinations) {
    if (!openFiles(destinations)) {
        return false;
    }
    std::optional<DigestContext> context;
    if (m_digestKind) {
        context.emplace(*m_digestKind);
        if (!context->isUsable()) {
            platform::host().console->log(
                kz::format("Error: This system has no digest of the kind wanted for file %@", m_sourcePath));
            return false;
        }
    }
    HashPipeline pipeline(std::move(context), {.count = m_digestKind ? hashedChunks : plainChunks, .size = chunkSize});
    if (!pipeline.isReady()) {
        KZLog::appendLog("Error copying file %@ - out of memory", m_sourcePath);
        return false;
    }
    if (!copyContents(pipeline)) {
        return false;
    }
    m_good.assign(m_destinations.all().size(), true);
    compareSizes();
    if (m_digestKind) {
        verify(pipeline.finish());
    }
    return complete();
}

bool FileCopy::openFiles(const std::vector<std::string>& destinations) {
    m_source = platform::host().openFiles->openForReading(m_sourcePath).file;
    const auto size = m_source ? m_source->size() : std::nullopt;
    if (!size) {
        platform::host().console->log(
            kz::format("Error: Unable to read source file %@. Aborting copy process...", m_sourcePath));
        return false;
    }
    m_sourceSize = *size;
    m_interval = progressInterval(*size);
    m_nextReport = m_interval;
    return m_destinations.open(destinations, *m_source);
}

bool FileCopy::copyContents(HashPipeline& pipeline) {
    for (;;) {
        const std::span<std::byte> buffer = pipeline.nextBuffer();
        const auto [bytes, code] = m_source->read(buffer);
        if (code == EINTR) {
            continue;
        }
        if (code != 0) {
            KZLog::appendLogAndPrint("Error reading file %@ - aborting...", m_sourcePath);
            return false;
        }
        if (bytes == 0) {
            return true;
        }
        pipeline.hash(bytes);
        if (!m_destinations.append(buffer.first(bytes))) {
            return false;
        }
        m_total += bytes;
        reportProgress();
        if (*m_cancelled) {
            return false;
        }
        if (m_total > m_sourceSize) {
            return true;  // the sizes differ already, and a source that is written to may never end
        }
    }
}

void FileCopy::reportProgress() {
    if (!m_delegate || m_total < m_nextReport) {
        return;
    }
    m_nextReport += m_interval;
    if (m_delegate->fileCopyBytesWritten) {
        performInBackground("fileCopyBytesWritten:settings:",
                            [delegate = m_delegate, settings = m_settings, total = m_total] {
                                delegate->fileCopyBytesWritten(total, *settings);
                            });
    }
    if (m_delegate->fileCopyShouldContinue) {
        askInBackground("fileCopyShouldContinue:", m_cancelled, [delegate = m_delegate, settings = m_settings] {
            return delegate->fileCopyShouldContinue(*settings);
        });
    }
}

// With the source as it was when the copy began and as it is now.
void FileCopy::compareSizes() {
    const auto sizeNow = m_source->size();
    for (std::size_t index = 0; index < m_good.size(); ++index) {
        const auto size = m_destinations.all()[index].file->size();
        if (!size || size != sizeNow || *size != m_sourceSize) {
            KZLog::appendLog("Error: copied file size does not match original source %@", m_sourcePath);
            m_good[index] = false;
        }
    }
}

void FileCopy::verify(std::string sourceDigest) {
    std::vector<std::string> digests = digestsOfDestinations(m_destinations.all(), *m_digestKind);
    auto settings = std::make_shared<FileCopySettings>(*m_settings);
    (*settings)["sourceChecksum"] = {sourceDigest};
    (*settings)[digests.size() == 1 ? "destChecksum" : "destChecksums"] =
        digests.size() == 1 ? FileCopyValue{digests.front()} : FileCopyValue{digests};
    m_settings = std::move(settings);
    for (std::size_t index = 0; index < digests.size(); ++index) {
        if (!digests[index].empty() && digests[index] == sourceDigest) {
            continue;
        }
        m_good[index] = false;
        if (m_delegate && m_delegate->fileCopyVerificationFailed) {
            callDelegate("fileCopyVerificationFailed:file:", [&] {
                m_delegate->fileCopyVerificationFailed(*m_settings, m_destinations.all()[index].path);
            });
        }
    }
}

bool FileCopy::complete() {
    bool allComplete = true;
    for (std::size_t index = 0; index < m_good.size(); ++index) {
        CopyDestination& destination = m_destinations.all()[index];
        if (m_good[index]) {
            if (const auto failure = destination.file->copyAttributesFrom(*m_source)) {
                platform::host().console->log(
                    kz::format("Error setting metadata for file %@ - %@", destination.path, failure->description));
            }
            destination.complete = CopyDestinations::close(destination);
        }
        allComplete = allComplete && destination.complete;
    }
    if (allComplete && m_delegate && m_delegate->fileCopyFinished) {
        callDelegate("fileCopyFinished:", [this] { m_delegate->fileCopyFinished(*m_settings); });
    }
    return allComplete;
}

SharedSettings settingsOf(const std::string& source, const std::vector<std::string>& destinations,
                          const SharedFileCopyDelegate& delegate, const std::any& object, const std::any& object2) {
    FileCopySettings settings{
        {"source", {source}}, {"destinations", {destinations}}, {"operationtype", {std::string("copy")}}};
    if (delegate) {
        settings["delegate"] = {delegate};
    }
    if (object.has_value()) {
        settings["object"].value.emplace<std::any>(object);
    }
    if (object2.has_value()) {
        settings["object2"].value.emplace<std::any>(object2);
    }
    return std::make_shared<const FileCopySettings>(std::move(settings));
}

bool canBegin(const std::string& source, const std::vector<std::string>& destinations) {
    if (!fileExistsAtPath(source)) {
        KZLog::appendLog("Error: File %@ doesn't exist. Aborting copy process...", source);
        return false;
    }
    if (destinations.empty()) {
        KZLog::appendLog("Error: You must have at least one destination. Aborting copy process...");
        return false;
    }
    for (const std::string& destination : destinations) {
        const std::string folder = kz::deletingLastPathComponent(destination);
        if (!fileExistsAtPath(folder)) {
            KZLog::appendLog(
                "Unable to copy file %@ - destination directory %@ doesn't exist. Aborting copy process...", source,
                folder);
            return false;
        }
    }
    return true;
}

}  // namespace

bool copyFileWithProgress(const std::string& source, const std::vector<std::string>& destinations,
                          FileCopyVerification verificationType, const SharedFileCopyDelegate& delegate,
                          const std::any& object, const std::any& object2) {
    bool done = false;
    // The caller's objects are copied, and may throw as a delegate may.
    callDelegate("copyFileWithProgress:destinations:verificationType:delegate:object:object:", [&] {
        if (!canBegin(source, destinations)) {
            return;
        }
        try {
            FileCopy copy(source, verificationType, delegate,
                          settingsOf(source, destinations, delegate, object, object2));
            done = copy.run(destinations);
        } catch (const std::bad_alloc&) {
            KZLog::appendLog("Error copying file %@ - out of memory", source);
        }
    });
    return done;
}

bool copyFileWithProgress(const std::string& source, const std::string& destination,
                          const SharedFileCopyDelegate& delegate, const std::any& object, const std::any& object2) {
    return copyFileWithProgress(source, std::vector{destination}, FileCopyVerification::none, delegate, object,
                                object2);
}

bool copyFileWithProgress(const std::string& source, const std::string& destination,
                          const SharedFileCopyDelegate& delegate, const std::any& object) {
    return copyFileWithProgress(source, destination, delegate, object, {});
}

}  // namespace KZFileManager
