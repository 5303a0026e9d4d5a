#include "platform/linux/services/workspace/TrashFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <string_view>
#include <utility>

#include "platform/linux/services/files/ActingAs.h"
#include "platform/linux/services/files/ItemMover.h"
#include "platform/linux/services/files/Staging.h"
#include "platform/posix/FileErrors.h"
#include "platform/posix/PathParts.h"
#include "platform/posix/StagedName.h"

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
int writeNote(const TrashFolder& trash, const std::string& name, const std::string& text) {
    const ActingAs rights(trash.user);
    if (!rights) {
        return EPERM;
    }
    const posix::Descriptor note(
        ::openat(trash.notes.get(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!note) {
        return errno;
    }
    const ssize_t written = ::write(note.get(), text.data(), text.size());
    if (written != static_cast<ssize_t>(text.size())) {
        const int code = written < 0 ? errno : ENOSPC;
        (void)::unlinkat(trash.notes.get(), name.c_str(), 0);
        return code;
    }
    return 0;
}

void removeNote(const TrashFolder& trash, const std::string& name) {
    const ActingAs rights(trash.user);
    (void)::unlinkat(trash.notes.get(), name.c_str(), 0);
}

std::string notedPath(const std::string& path, const std::string& topFolder) {
    if (topFolder.empty()) {
        return path;
    }
    const std::string top = topFolder == "/" ? topFolder : topFolder + "/";
    return path.starts_with(top) ? path.substr(top.size()) : path;
}

bool exists(const ItemPlace& item) {
    struct stat status {};
    return ::fstatat(item.folder, item.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

// Fails with EEXIST for a name that is taken; nothing has changed then.
Failure moveUnderName(const ItemPlace& item, const TrashFolder& trash, const std::string& name) {
    const std::string note = name + std::string(noteSuffix);
    if (trash.notes) {
        const std::string text = trashNote(notedPath(item.shown, trash.topFolder), std::time(nullptr));
        if (const int code = writeNote(trash, note, text); code != 0) {
            return posix::fileError("move to the Trash", item.shown, code);
        }
    }
    Failure failed =
        moveItem(item, {.folder = trash.items.get(), .name = name, .shown = posix::joinPath(trash.path, name)});
    if (failed && trash.notes && exists(item)) {
        removeNote(trash, note);
    }
    if (!failed && trash.user) {
        giveFolders(trash.items.get(), name, *trash.user);
    }
    return failed;
}

}  // namespace

bool belongsTo(int folder, const std::optional<Owner>& user) {
    struct stat status {};
    return ::fstat(folder, &status) == 0 && status.st_uid == (user ? user->user : ::geteuid());
}

posix::Descriptor privateFolder(int parent, const std::string& name, const std::optional<Owner>& user) {
    const ActingAs rights(user);
    if (!rights || (::mkdirat(parent, name.c_str(), S_IRWXU) != 0 && errno != EEXIST)) {
        return {};
    }
    posix::Descriptor folder(::openat(parent, name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    return folder && belongsTo(folder.get(), user) ? std::move(folder) : posix::Descriptor();
}

std::optional<TrashFolder> makeTrash(int trash, const std::string& path, const std::optional<Owner>& user) {
    TrashFolder made{.items = privateFolder(trash, "files", user),
                     .notes = privateFolder(trash, "info", user),
                     .path = posix::joinPath(path, "files"),
                     .topFolder = {},
                     .user = user};
    return made.items && made.notes ? std::optional(std::move(made)) : std::nullopt;
}

Failure moveIntoTrash(const ItemPlace& item, const TrashFolder& trash) {
    const std::string name = posix::splitPath(item.name).name;
    Failure failed;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        failed = moveUnderName(item, trash, trashName(name, attempt));
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
        mark = posix::stagedName().substr(posix::stagedName().rfind('-'));
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
