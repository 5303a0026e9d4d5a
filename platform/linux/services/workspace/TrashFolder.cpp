#include "platform/linux/services/workspace/TrashFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <string_view>

#include "platform/linux/services/files/FileErrors.h"
#include "platform/linux/services/files/ItemMover.h"
#include "platform/linux/services/files/PathParts.h"
#include "platform/linux/services/files/Staging.h"
#include "platform/posix/Descriptor.h"

namespace platform::linux_host {

namespace {

constexpr std::string_view noteSuffix = ".trashinfo";
constexpr std::size_t longestName = 255 - noteSuffix.size();
constexpr std::size_t longestExtension = 32;
constexpr int countedAttempts = 16;
constexpr int attempts = 64;

std::string cutBetweenCharacters(std::string text, std::size_t length) {
    if (text.size() > length) {
        while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
            --length;
        }
        text.resize(length);
    }
    return text;
}

bool isPlain(unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
           c == '_' || c == '~' || c == '/';
}

std::string percentEncoded(const std::string& path) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (isPlain(byte)) {
            text += c;
        } else {
            text += {'%', digits[byte >> 4U], digits[byte & 0x0FU]};
        }
    }
    return text;
}

// 0 or an errno; EEXIST when there is such a note.
int writeNote(const std::string& path, const std::string& text, const std::optional<Owner>& owner) {
    const posix::Descriptor note(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!note) {
        return errno;
    }
    const ssize_t written = ::write(note.get(), text.data(), text.size());
    if (written != static_cast<ssize_t>(text.size())) {
        const int code = written < 0 ? errno : ENOSPC;
        (void)::unlink(path.c_str());
        return code;
    }
    if (owner) {
        (void)::fchown(note.get(), owner->user, owner->group);
    }
    return 0;
}

std::string notedPath(const std::string& path, const std::string& topFolder) {
    if (topFolder.empty()) {
        return path;
    }
    const std::string top = topFolder == "/" ? topFolder : topFolder + "/";
    return path.starts_with(top) ? path.substr(top.size()) : path;
}

bool exists(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0;
}

// 0 or an errno, with EEXIST for a name that is taken; nothing has changed then.
Failure moveUnderName(const std::string& path, const TrashFolder& trash, const std::string& name) {
    const std::string note = trash.notes ? joinPath(*trash.notes, name) + std::string(noteSuffix) : std::string();
    if (trash.notes) {
        const std::string text = trashNote(notedPath(path, trash.topFolder), std::time(nullptr));
        if (const int code = writeNote(note, text, trash.owner); code != 0) {
            return fileError("move to the Trash", path, code);
        }
    }
    const std::string item = joinPath(trash.items, name);
    Failure failed = moveItem(path, item);
    if (failed && trash.notes && exists(path)) {
        (void)::unlink(note.c_str());
    }
    if (!failed && trash.owner) {
        giveTree(item, *trash.owner);
    }
    return failed;
}

}  // namespace

bool makePrivateFolder(const std::string& path, const std::optional<Owner>& owner) {
    const bool made = ::mkdir(path.c_str(), S_IRWXU) == 0;
    if (!made && errno != EEXIST) {
        return false;
    }
    const posix::Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder) {
        return false;
    }
    if (made && owner && ::fchown(folder.get(), owner->user, owner->group) != 0) {
        return false;
    }
    struct stat status {};
    return ::fstat(folder.get(), &status) == 0 && status.st_uid == (owner ? owner->user : ::geteuid());
}

std::optional<TrashFolder> makeTrash(const std::string& trash, const std::optional<Owner>& owner) {
    TrashFolder made{joinPath(trash, "files"), joinPath(trash, "info"), {}, owner};
    if (!makePrivateFolder(made.items, owner) || !makePrivateFolder(*made.notes, owner)) {
        return std::nullopt;
    }
    return made;
}

Failure moveIntoTrash(const std::string& path, const TrashFolder& trash) {
    const std::string name = splitPath(path).name;
    Failure failed;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        failed = moveUnderName(path, trash, trashName(name, attempt));
        if (!failed || failed->code != EEXIST) {
            return failed;
        }
    }
    return failed;
}

std::string trashName(const std::string& name, int attempt) {
    if (attempt == 0 && name.size() <= longestName) {
        return name;
    }
    std::string mark;
    if (attempt >= countedAttempts) {
        mark = stagedName().substr(stagedName().rfind('-'));
        mark.front() = '.';
    } else if (attempt > 0) {
        mark = "." + std::to_string(attempt + 1);
    }
    const auto dot = name.rfind('.');
    const bool hasExtension = dot != std::string::npos && dot != 0 && name.size() - dot <= longestExtension;
    const std::string stem = hasExtension ? name.substr(0, dot) : name;
    const std::string extension = hasExtension ? name.substr(dot) : std::string();
    return cutBetweenCharacters(stem, longestName - mark.size() - extension.size()) + mark + extension;
}

std::string trashNote(const std::string& originalPath, std::time_t when) {
    std::tm local{};
    ::localtime_r(&when, &local);
    std::array<char, 32> date{};
    const std::size_t length = std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &local);
    return "[Trash Info]\nPath=" + percentEncoded(originalPath) + "\nDeletionDate=" + std::string(date.data(), length) +
           "\n";
}

}  // namespace platform::linux_host
