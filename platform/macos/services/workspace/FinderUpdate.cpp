#include "platform/macos/services/workspace/FinderUpdate.h"

#include <CoreServices/CoreServices.h>

namespace platform::macos {

namespace {

constexpr OSType finder = 'MACS';

// As kAEFinderSuite and kAESync, whose header belongs to another framework in some of the system's versions.
constexpr AEEventClass finderSuite = 'fndr';
constexpr AEEventID update = 'fupd';

// All zero for what is no item.
FSRef reference(const std::string& path) {
    FSRef item{};
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): bytes under another name
    const auto* const bytes = reinterpret_cast<const UInt8*>(path.data());
    CFURLRef const url =
        CFURLCreateFromFileSystemRepresentation(kCFAllocatorDefault, bytes, static_cast<CFIndex>(path.size()), false);
    if (url != nullptr) {
        (void)CFURLGetFSRef(url, &item);
        CFRelease(url);
    }
    return item;
}

OSStatus sendAbout(AliasHandle alias) {
    AppleEvent event{typeNull, nullptr};
    AppleEvent reply{typeNull, nullptr};
    OSStatus status =
        AEBuildAppleEvent(finderSuite, update, typeApplSignature, &finder, sizeof finder, kAutoGenerateReturnID,
                          kAnyTransactionID, &event, nullptr, "'----':alis(@@)", alias);
    if (status == noErr) {
        status = AESendMessage(&event, &reply, kAENoReply, kAEDefaultTimeout);
        AEDisposeDesc(&reply);
        AEDisposeDesc(&event);
    }
    return status;
}

}  // namespace

int sendFinderUpdate(const std::optional<std::string>& path) {
    const FSRef item = path ? reference(*path) : FSRef{};
    AliasHandle alias = nullptr;
    OSStatus status = FSNewAliasMinimal(&item, &alias);
    if (status != noErr) {
        return status;
    }
    status = sendAbout(alias);
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): an alias is a handle with a type of its own
    DisposeHandle(reinterpret_cast<Handle>(alias));
    return status;
}

}  // namespace platform::macos
