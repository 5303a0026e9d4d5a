#include "platform/linux/qt/agreement/AgreementFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "platform/posix/Descriptor.h"

namespace platform::qt {

namespace {

constexpr std::size_t kChunk = std::size_t{256} * 1024;

bool isFolder(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// A trailing slash does not hide a folder's extension.
QByteArray extensionOf(std::string_view path) {
    while (path.ends_with('/')) {
        path.remove_suffix(1);
    }
    const std::string_view name = path.substr(path.rfind('/') + 1);
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) {
        return {};
    }
    return QByteArray(name.data() + dot + 1, static_cast<qsizetype>(name.size() - dot - 1)).toLower();
}

QByteArrayView withoutLeadingBlanks(QByteArrayView contents) {
    if (contents.startsWith("\xEF\xBB\xBF")) {
        contents = contents.sliced(3);
    }
    while (!contents.isEmpty() && QByteArrayView(" \t\r\n").contains(contents.front())) {
        contents = contents.sliced(1);
    }
    return contents;
}

AgreementKind kindByOpening(QByteArrayView contents) {
    const QByteArrayView opening = withoutLeadingBlanks(contents.first(std::min<qsizetype>(contents.size(), 1024)));
    if (opening.startsWith("{\\rtf")) {
        return AgreementKind::richText;
    }
    const QByteArray lower = opening.first(std::min<qsizetype>(opening.size(), 14)).toByteArray().toLower();
    if (lower.startsWith("<!doctype html") || lower.startsWith("<html")) {
        return AgreementKind::html;
    }
    return AgreementKind::plainText;
}

}  // namespace

std::optional<AgreementFile> readAgreementFile(const std::string& path, std::size_t limit) {
    // Without O_NONBLOCK a pipe that nobody writes to would hold the window up for ever.
    const posix::Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    AgreementFile result;
    const auto expected = static_cast<std::size_t>(std::max<off_t>(status.st_size, 0));
    result.bytes.reserve(static_cast<qsizetype>(std::min(expected, limit)));
    std::string chunk(kChunk, '\0');
    while (true) {
        const std::size_t room = limit - static_cast<std::size_t>(result.bytes.size());
        const ssize_t count = ::read(file.get(), chunk.data(), std::min(chunk.size(), room + 1));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0 && result.bytes.isEmpty()) {
            return std::nullopt;
        }
        if (count <= 0) {
            result.complete = count == 0;
            return result;
        }
        const auto taken = std::min(static_cast<std::size_t>(count), room);
        result.bytes.append(chunk.data(), static_cast<qsizetype>(taken));
        if (taken < static_cast<std::size_t>(count)) {
            result.complete = false;
            return result;
        }
    }
}

std::optional<std::string> richTextOfFolder(const std::string& path) {
    if (!isFolder(path)) {
        return std::nullopt;
    }
    std::string file = path + "/TXT.rtf";
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return file;
}

AgreementKind agreementKind(std::string_view path, QByteArrayView contents) {
    const QByteArray extension = extensionOf(path);
    if (extension == "html" || extension == "htm" || extension == "xhtml") {
        return AgreementKind::html;
    }
    // What calls itself rich text and is not reads better as the text that it is.
    return kindByOpening(contents);
}

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace platform::qt
