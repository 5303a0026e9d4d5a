#import "platform/macos/services/workspace/MacWorkspace.h"

#import <AppKit/AppKit.h>

#import "platform/macos/foundation/Guarded.h"
#import "platform/macos/foundation/Text.h"
#include "platform/macos/services/workspace/FinderUpdate.h"
#include "platform/macos/services/workspace/RecycleRefusal.h"
#include "platform/macos/services/workspace/Registration.h"
#include "platform/posix/FileErrors.h"

namespace platform::macos {

bool MacWorkspace::isFilePackage(const std::string& path) {
    bool package = false;
    guarded("a look at a package",
            [&] { package = [[NSWorkspace sharedWorkspace] isFilePackageAtPath:toNS(path)] == YES; });
    return package;
}

Failure MacWorkspace::recycle(const std::string& folder, const std::string& name, const std::string& trashFolder) {
    bool recycled = false;
    guarded("moving to the Trash", [&] {
        recycled = [[NSWorkspace sharedWorkspace] performFileOperation:NSWorkspaceRecycleOperation
                                                                source:toNS(folder)
                                                           destination:toNS(trashFolder)
                                                                 files:[NSArray arrayWithObject:toNS(name)]
                                                                   tag:nullptr] == YES;
    });
    return recycled
               ? Failure{}
               : posix::fileError("move to the Trash", folder + "/" + name, recycleRefusal(folder, name, trashFolder));
}

std::vector<std::string> MacWorkspace::mountedLocalVolumePaths() {
    std::vector<std::string> paths;
    guarded("the mounted volumes", [&] {
        for (NSString* path in [[NSWorkspace sharedWorkspace] mountedLocalVolumePaths]) {
            paths.push_back(fromNS(path));
        }
    });
    return paths;
}

void MacWorkspace::noteFileSystemChanged(const std::string& path) {
    guarded("a note of a change", [&] { [[NSWorkspace sharedWorkspace] noteFileSystemChanged:toNS(path)]; });
}

int MacWorkspace::sendFinderUpdate(const std::optional<std::string>& path) { return macos::sendFinderUpdate(path); }

bool MacWorkspace::openURL(const std::string& url) {
    bool opened = false;
    guarded("opening an address", [&] {
        NSURL* const address = [NSURL URLWithString:toNS(url)];
        opened = address != nil && [[NSWorkspace sharedWorkspace] openURL:address] == YES;
    });
    return opened;
}

std::optional<std::string> MacWorkspace::applicationWithIdentifier(const std::string& identifier) {
    std::optional<std::string> path;
    guarded("looking for an application", [&] {
        NSString* const found = [[NSWorkspace sharedWorkspace] absolutePathForAppBundleWithIdentifier:toNS(identifier)];
        if ([found length] > 0) {
            path = fromNS(found);
        }
    });
    return path;
}

bool MacWorkspace::openURLs(const std::vector<std::string>& urls, const std::string& identifier) {
    bool opened = false;
    guarded("opening addresses", [&] {
        NSMutableArray* const addresses = [NSMutableArray arrayWithCapacity:urls.size()];
        for (const std::string& url : urls) {
            NSURL* const address = [NSURL URLWithString:toNS(url)];
            if (address == nil) {
                return;
            }
            [addresses addObject:address];
        }
        opened = [[NSWorkspace sharedWorkspace] openURLs:addresses
                                 withAppBundleIdentifier:toNS(identifier)
                                                 options:NSWorkspaceLaunchAsync
                          additionalEventParamDescriptor:nil
                                       launchIdentifiers:nullptr] == YES;
    });
    return opened;
}

Failure MacWorkspace::registerApplication(const std::string& bundlePath) {
    if (Failure refused = posix::refusedPath("register", bundlePath)) {
        return refused;
    }
    const int status = registerWithLaunchServices(bundlePath);
    if (status == 0) {
        return {};
    }
    return Error{status, "Cannot register “" + bundlePath + "” (status " + std::to_string(status) + ")"};
}

}  // namespace platform::macos
