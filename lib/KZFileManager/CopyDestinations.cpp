#include "lib/KZFileManager/CopyDestinations.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "lib/KZLog.h"
#include "platform/ports/Host.h"

namespace KZFileManager {

namespace {

platform::OpenFiles& openFiles() { return *platform::host().openFiles; }

void logWriteError(const std::string& path, int code) { KZLog::appendLog("Error writing file %@: %i", path, code); }

struct WriteError {
    int code = 0;               // an errno
    std::size_t remaining = 0;  // bytes that were to be written
};

// Brings the file back to where the writing stopped.
bool reposition(CopyDestination& destination, std::uint64_t position, const WriteError& error) {
    const int code = destination.file->seek(position);
    if (code == 0) {
        return true;
    }
    KZLog::appendLog("Error: unable to seek within file %@", destination.path);
    KZLog::appendLog("cur pos: %llu", position);
    KZLog::appendLog("read size: %zu", error.remaining);
    KZLog::appendLog("errno: %i", code);
    KZLog::appendLog("err: %i", error.code);
    return false;
}

}  // namespace

CopyDestinations::~CopyDestinations() {
    for (CopyDestination& destination : m_destinations) {
        if (!destination.complete && (destination.created || destination.emptied)) {
            discard(destination);
        }
    }
}

bool CopyDestinations::open(const std::vector<std::string>& paths, platform::OpenFile& source) {
    m_destinations.reserve(paths.size());
    const auto refuse = [](const std::string& path) {
        KZLog::appendLog("Error: Unable to open destination file %@. Aborting copy process...", path);
        return false;
    };
    for (const std::string& path : paths) {
        auto opened = openFiles().openForWriting(path);
        const auto identity = opened.file ? opened.file->identity() : std::nullopt;
        if (!identity || isTaken(*identity, source)) {
            return refuse(path);
        }
        m_destinations.push_back(
            {.path = path, .file = std::move(opened.file), .identity = *identity, .created = opened.created});
    }
    for (CopyDestination& destination : m_destinations) {
        if (!destination.created && destination.file->truncate() != 0) {
            return refuse(destination.path);
        }
        destination.emptied = true;
    }
    return true;
}

bool CopyDestinations::isTaken(const platform::FileIdentity& identity, platform::OpenFile& source) const {
    return identity == source.identity() ||
           std::any_of(m_destinations.begin(), m_destinations.end(),
                       [&](const CopyDestination& destination) { return destination.identity == identity; });
}

bool CopyDestinations::append(std::span<const std::byte> chunk) {
    for (CopyDestination& destination : m_destinations) {
        if (!append(destination, chunk)) {
            return false;
        }
    }
    m_position += chunk.size();
    return true;
}

bool CopyDestinations::append(CopyDestination& destination, std::span<const std::byte> chunk) const {
    std::uint64_t position = m_position;
    bool triedAgain = false;
    while (!chunk.empty()) {
        const auto [bytes, failure] = destination.file->write(chunk);
        if (failure == EINTR) {
            continue;
        }
        if (bytes > 0) {
            chunk = chunk.subspan(bytes);
            position += bytes;
            continue;
        }
        const int code = failure != 0 ? failure : EIO;  // neither written nor refused
        logWriteError(destination.path, code);
        if (triedAgain || !reposition(destination, position, {.code = code, .remaining = chunk.size()})) {
            return false;
        }
        triedAgain = true;
    }
    return true;
}

bool CopyDestinations::close(CopyDestination& destination) {
    const int code = destination.file->close();
    destination.file.reset();
    if (code != 0) {
        logWriteError(destination.path, code);
    }
    return code == 0;
}

void CopyDestinations::discard(CopyDestination& destination) {
    platform::FileManager& files = *platform::host().files;
    if (!destination.file) {
        if (files.identity(destination.path) != destination.identity) {
            return;  // gone already: to open it would make it again
        }
        auto again = openFiles().openForWriting(destination.path);
        if (!again.file || again.file->identity() != destination.identity) {
            return;
        }
        destination.file = std::move(again.file);
    }
    (void)destination.file->truncate();  // in case that it cannot be removed
    if (destination.created && files.identity(destination.path) == destination.identity) {
        (void)files.removeItem(destination.path);
    }
}

}  // namespace KZFileManager
