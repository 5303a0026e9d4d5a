#import "platform/macos/services/files/MacFileManager.h"

#include <sys/stat.h>

#import "platform/macos/foundation/Dates.h"
#import "platform/macos/foundation/Text.h"
#import "platform/macos/services/files/FileManagerCalls.h"
#include "platform/macos/services/files/FolderVisit.h"
#include "platform/macos/services/files/ItemCopier.h"
#include "platform/posix/AppendHandle.h"
#include "platform/posix/WholeFile.h"

namespace platform::macos {

namespace {

FileType typeFromNS(NSString* type) {
    if ([type isEqualToString:NSFileTypeRegular]) {
        return FileType::regular;
    }
    if ([type isEqualToString:NSFileTypeDirectory]) {
        return FileType::folder;
    }
    return [type isEqualToString:NSFileTypeSymbolicLink] ? FileType::symbolicLink : FileType::other;
}

FileAttributes attributesFromNS(NSDictionary* found) {
    FileAttributes attributes;
    attributes.type = typeFromNS([found fileType]);
    attributes.size = [found fileSize];
    attributes.permissions = static_cast<unsigned>([found filePosixPermissions]) & 07777U;
    attributes.immutable = [[found objectForKey:NSFileImmutable] boolValue] == YES;
    attributes.modificationDate = fromNS([found fileModificationDate]);
    if (NSDate* const created = [found fileCreationDate]) {
        attributes.creationDate = fromNS(created);
    }
    return attributes;
}

// For file systems that cannot rename without replacing: what stands there is looked for first.
int moveByFoundation(const std::string& from, const std::string& to) {
    const Failure failed = attempt("move", from, [&to](NSFileManager* files, NSString* item, NSError** error) {
        return [files moveItemAtPath:item toPath:toNS(to) error:error] == YES;
    });
    return failed ? failed->code : 0;
}

}  // namespace

NSString* pathToNS(const std::string& path) {
    if (path.empty() || path.find('\0') != std::string::npos) {
        return nil;
    }
    return [[[NSString alloc] initWithBytes:path.data() length:path.size() encoding:NSUTF8StringEncoding] autorelease];
}

bool MacFileManager::fileExists(const std::string& path) {
    bool exists = false;
    guarded("a look at a file", [&] {
        NSString* const item = pathToNS(path);
        exists = item != nil && [fileManager() fileExistsAtPath:item] == YES;
    });
    return exists;
}

bool MacFileManager::isFolder(const std::string& path) {
    bool folder = false;
    guarded("a look at a folder", [&] {
        NSString* const item = pathToNS(path);
        BOOL directory = NO;
        folder = item != nil && [fileManager() fileExistsAtPath:item isDirectory:&directory] == YES && directory == YES;
    });
    return folder;
}

bool MacFileManager::isWritable(const std::string& path) {
    bool writable = false;
    guarded("a look at the rights", [&] {
        NSString* const item = pathToNS(path);
        writable = item != nil && [fileManager() isWritableFileAtPath:item] == YES;
    });
    return writable;
}

bool MacFileManager::isExecutable(const std::string& path) {
    bool executable = false;
    guarded("a look at the rights", [&] {
        NSString* const item = pathToNS(path);
        executable = item != nil && [fileManager() isExecutableFileAtPath:item] == YES;
    });
    return executable;
}

std::optional<FileIdentity> MacFileManager::identity(const std::string& path) {
    struct stat status {};
    if (posix::refusedPath("look at", path) || ::stat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return FileIdentity{static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino)};
}

std::optional<FileAttributes> MacFileManager::attributes(const std::string& path) {
    std::optional<FileAttributes> attributes;
    guarded("a file's attributes", [&] {
        NSString* const item = pathToNS(path);
        NSDictionary* const found = item == nil ? nil : [fileManager() attributesOfItemAtPath:item error:nullptr];
        if (found != nil) {
            attributes = attributesFromNS(found);
        }
    });
    return attributes;
}

std::optional<std::string> MacFileManager::destinationOfSymbolicLink(const std::string& path) {
    std::optional<std::string> destination;
    guarded("a link's destination", [&] {
        NSString* const item = pathToNS(path);
        NSString* const found = item == nil ? nil : [fileManager() destinationOfSymbolicLinkAtPath:item error:nullptr];
        if (found != nil) {
            destination = fromNS(found);
        }
    });
    return destination;
}

std::optional<std::vector<DirectoryEntry>> MacFileManager::contentsOfDirectory(const std::string& path) {
    std::optional<std::vector<DirectoryEntry>> entries;
    guarded("the contents of a folder", [&] {
        NSString* const folder = pathToNS(path);
        NSArray* const names = folder == nil ? nil : [fileManager() contentsOfDirectoryAtPath:folder error:nullptr];
        if (names == nil) {
            return;
        }
        entries.emplace().reserve([names count]);
        for (NSString* name in names) {
            entries->push_back({.name = fromNS(name), .type = FileType::unknown});
        }
    });
    return entries;
}

bool MacFileManager::visitDirectory(const std::string& path, VisitSizes sizes,
                                    const std::function<void(const VisitedEntry&)>& visit) {
    return visitFolder(path, sizes, visit);
}

Failure MacFileManager::removeItem(const std::string& path) {
    return attempt("remove", path, [](NSFileManager* files, NSString* item, NSError** error) {
        return [files removeItemAtPath:item error:error] == YES;
    });
}

Failure MacFileManager::createDirectory(const std::string& path, Intermediates intermediates) {
    return attempt("create the folder", path, [intermediates](NSFileManager* files, NSString* item, NSError** error) {
        return [files createDirectoryAtPath:item
                   withIntermediateDirectories:intermediates == Intermediates::yes ? YES : NO
                                    attributes:nil
                                         error:error] == YES;
    });
}

Failure MacFileManager::copyItem(const std::string& source, const std::string& destination) {
    if (Failure refused = posix::refusedPath("copy", source)) {
        return refused;
    }
    if (Failure refused = posix::refusedPath("copy to", destination)) {
        return refused;
    }
    const int code = copyWithoutReplacing(source, destination, moveByFoundation);
    return code == 0 ? Failure{} : posix::fileError("copy", source, destination, code);
}

Failure MacFileManager::moveItem(const std::string& source, const std::string& destination) {
    if (Failure refused = posix::refusedPath("move", source)) {
        return refused;
    }
    if (Failure refused = posix::refusedPath("move to", destination)) {
        return refused;
    }
    const int code = moveWithoutReplacing(source, destination, moveByFoundation);
    return code == 0 ? Failure{} : posix::fileError("move", source, destination, code);
}

Failure MacFileManager::writeAtomically(const std::string& path, std::string_view contents) {
    return posix::replaceFile(path, contents);
}

std::optional<std::string> MacFileManager::readFile(const std::string& path, std::uint64_t limit) {
    return posix::readWholeFile(path, limit);
}

std::unique_ptr<FileManager::AppendHandle> MacFileManager::openForAppending(const std::string& path) {
    return posix::openAppendHandle(path);
}

}  // namespace platform::macos
