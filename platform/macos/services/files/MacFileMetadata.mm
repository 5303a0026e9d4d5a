#include <sys/stat.h>
#include <sys/xattr.h>

#include <cerrno>

#import "platform/macos/foundation/Dates.h"
#import "platform/macos/services/files/FileManagerCalls.h"
#import "platform/macos/services/files/MacFileManager.h"

namespace platform::macos {

namespace {

constexpr long mostLabel = 7;

Failure setAttribute(const char* doing, const std::string& path, NSString* name, id value) {
    return attempt(doing, path, [name, value](NSFileManager* files, NSString* item, NSError** error) {
        return [files setAttributes:[NSDictionary dictionaryWithObject:value forKey:name]
                       ofItemAtPath:item
                              error:error] == YES;
    });
}

// Both end an attribute's name early or name none.
bool isPossibleName(const std::string& name) { return !name.empty() && name.find('\0') == std::string::npos; }

}  // namespace

Failure MacFileManager::setImmutable(const std::string& path, bool immutable) {
    constexpr const char* doing = "set the lock of";
    const auto present = attributes(path);
    if (present && present->immutable == immutable) {
        return {};
    }
    Failure failed = posix::fileError(doing, path, EIO);
    guarded(doing, [&] {
        failed = setAttribute(doing, path, NSFileImmutable, [NSNumber numberWithBool:immutable ? YES : NO]);
    });
    const bool cannotBeLocked = failed && failed->code == ENOTSUP;
    return cannotBeLocked && !immutable ? Failure{} : failed;
}

Failure MacFileManager::setPermissions(const std::string& path, unsigned permissions) {
    constexpr const char* doing = "set the permissions of";
    Failure failed = posix::fileError(doing, path, EIO);
    guarded(doing, [&] {
        failed =
            setAttribute(doing, path, NSFilePosixPermissions, [NSNumber numberWithUnsignedLong:permissions & 07777U]);
    });
    return failed;
}

Failure MacFileManager::setCreationDate(const std::string& path, Date date) {
    constexpr const char* doing = "set the creation date of";
    Failure failed = posix::fileError(doing, path, EIO);
    guarded(doing, [&] { failed = setAttribute(doing, path, NSFileCreationDate, toNS(date)); });
    return failed;
}

Failure MacFileManager::setModificationDate(const std::string& path, Date date) {
    constexpr const char* doing = "set the modification date of";
    Failure failed = posix::fileError(doing, path, EIO);
    guarded(doing, [&] { failed = setAttribute(doing, path, NSFileModificationDate, toNS(date)); });
    return failed;
}

std::variant<std::size_t, Error> MacFileManager::readExtendedAttribute(const std::string& path, const std::string& name,
                                                                       std::span<char> room) {
    constexpr const char* doing = "read an extended attribute of";
    if (Failure refused = posix::refusedPath(doing, path)) {
        return *refused;
    }
    if (!isPossibleName(name)) {
        return posix::fileError(doing, path, EINVAL);
    }
    void* const buffer = room.empty() ? nullptr : room.data();
    const ssize_t size = ::getxattr(path.c_str(), name.c_str(), buffer, room.size(), 0, 0);
    if (size < 0) {
        return posix::fileError(doing, path, errno);
    }
    return static_cast<std::size_t>(size);
}

Failure MacFileManager::setExtendedAttribute(const std::string& path, const std::string& name,
                                             std::span<const char> value) {
    constexpr const char* doing = "set an extended attribute of";
    if (Failure refused = posix::refusedPath(doing, path)) {
        return refused;
    }
    if (!isPossibleName(name)) {
        return posix::fileError(doing, path, EINVAL);
    }
    const bool set = ::setxattr(path.c_str(), name.c_str(), value.data(), value.size(), 0, 0) == 0;
    return set ? Failure{} : posix::fileError(doing, path, errno);
}

std::optional<int> MacFileManager::labelNumber(const std::string& path) {
    struct stat status {};
    if (posix::refusedPath("read the label of", path) || ::lstat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    int label = 0;
    guarded("a label", [&] {
        NSString* const item = pathToNS(path);
        id number = nil;
        if (item != nil && [[NSURL fileURLWithPath:item] getResourceValue:&number
                                                                   forKey:NSURLLabelNumberKey
                                                                    error:nullptr]) {
            label = [number intValue];
        }
    });
    return label;
}

Failure MacFileManager::setLabelNumber(const std::string& path, long number) {
    constexpr const char* doing = "set the label of";
    if (number < 0 || number > mostLabel) {
        return posix::fileError(doing, path, EINVAL);
    }
    struct stat status {};
    if (!posix::refusedPath(doing, path) && ::lstat(path.c_str(), &status) != 0) {
        return posix::fileError(doing, path, errno);
    }
    return attempt(doing, path, [number](NSFileManager*, NSString* item, NSError** error) {
        return [[NSURL fileURLWithPath:item] setResourceValue:[NSNumber numberWithLong:number]
                                                       forKey:NSURLLabelNumberKey
                                                        error:error] == YES;
    });
}

}  // namespace platform::macos
