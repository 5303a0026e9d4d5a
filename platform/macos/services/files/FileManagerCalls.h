// What the calls on Foundation's file manager have in common.
#pragma once

#import <Foundation/Foundation.h>

#include <cerrno>
#include <string>

#import "platform/macos/foundation/Failures.h"
#import "platform/macos/foundation/Guarded.h"
#include "platform/posix/FileErrors.h"

namespace platform::macos {

// Nil for a path that Foundation cannot hold: empty, with a NUL, or no UTF-8.
NSString* pathToNS(const std::string& path);

// Never the shared one, so that any thread may use it; autoreleased.
inline NSFileManager* fileManager() { return [[[NSFileManager alloc] init] autorelease]; }

// Runs `call`, which gets a file manager, the path and where to put an error, and answers whether it has worked.
template <typename Call>
Failure attempt(const char* doing, const std::string& path, const Call& call) {
    if (Failure refused = posix::refusedPath(doing, path)) {
        return refused;
    }
    Failure failure = posix::fileError(doing, path, EILSEQ);
    const bool ended = guarded(doing, [&] {
        NSString* const item = pathToNS(path);
        NSError* error = nil;
        if (item == nil) {
            return;
        }
        failure = call(fileManager(), item, &error) ? Failure{} : Failure{errorFromNS(error, path)};
    });
    return ended ? failure : posix::fileError(doing, path, EIO);
}

}  // namespace platform::macos
