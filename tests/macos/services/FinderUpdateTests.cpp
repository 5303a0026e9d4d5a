// The event that is sent to the Finder, whose calls are pretended here.
#include "platform/macos/services/workspace/FinderUpdate.h"

#include <CoreServices/CoreServices.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

struct Pretended {
    OSErr aliasAnswer = noErr;
    OSStatus buildAnswer = noErr;
    OSStatus sendAnswer = noErr;
    std::vector<std::string> calls;
};
Pretended pretended;

AliasRecord aliasRecord{};
AliasRecord* aliasPointer = &aliasRecord;

class FinderUpdate : public testing::Test {
protected:
    FinderUpdate() { pretended = {}; }
};

std::string code(FourCharCode number) {
    std::string text;
    for (unsigned shift = 32; shift > 0; shift -= 8) {
        text += static_cast<char>((number >> (shift - 8)) & 0xFFU);
    }
    return text;
}

}  // namespace

extern "C" {

const CFAllocatorRef kCFAllocatorDefault = nullptr;

void CFRelease(CFTypeRef /*object*/) { pretended.calls.emplace_back("release"); }

CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef /*allocator*/, const UInt8* bytes, CFIndex length,
                                                 Boolean /*isDirectory*/) {
    static std::string path;
    path.assign(bytes, bytes + length);
    return path.empty() ? nullptr : reinterpret_cast<CFURLRef>(&path);
}

Boolean CFURLGetFSRef(CFURLRef url, FSRef* item) {
    const std::string& path = *reinterpret_cast<const std::string*>(url);
    std::copy_n(path.begin(), std::min(path.size(), sizeof item->hidden), item->hidden);
    return 1;
}

OSErr FSNewAliasMinimal(const FSRef* target, AliasHandle* alias) {
    const char* const hidden = reinterpret_cast<const char*>(target->hidden);
    pretended.calls.push_back("alias of " + std::string(hidden, strnlen(hidden, sizeof target->hidden)));
    *alias = &aliasPointer;
    return pretended.aliasAnswer;
}

void DisposeHandle(Handle handle) {
    pretended.calls.emplace_back(handle == reinterpret_cast<Handle>(&aliasPointer) ? "dispose alias" : "dispose?");
}

OSStatus AEBuildAppleEvent(AEEventClass eventClass, AEEventID eventID, DescType addressType, const void* addressData,
                           Size addressLength, AEReturnID returnID, AETransactionID transactionID,
                           AppleEvent* /*result*/, AEBuildError* error, const char* format, ...) {
    OSType address = 0;
    std::memcpy(&address, addressData, std::min(sizeof address, static_cast<std::size_t>(addressLength)));
    pretended.calls.push_back(code(eventClass) + " " + code(eventID) + " to " + code(addressType) + " " +
                              code(address) + " " + std::to_string(returnID) + " " + std::to_string(transactionID) +
                              " " + format + (error == nullptr ? "" : " error?"));
    return pretended.buildAnswer;
}

OSStatus AESendMessage(const AppleEvent* /*event*/, AppleEvent* /*reply*/, AESendMode mode, long timeOutInTicks) {
    pretended.calls.push_back("send " + std::to_string(mode) + " " + std::to_string(timeOutInTicks));
    return pretended.sendAnswer;
}

OSErr AEDisposeDesc(AEDesc* /*descriptor*/) {
    pretended.calls.emplace_back("dispose");
    return noErr;
}

}  // extern "C"

namespace {

using Calls = std::vector<std::string>;

TEST_F(FinderUpdate, IsOneEventWithoutAReplyThatNamesTheItem) {
    EXPECT_EQ(platform::macos::sendFinderUpdate("/a/b"), 0);
    EXPECT_EQ(pretended.calls, (Calls{"release", "alias of /a/b", "fndr fupd to sign MACS -1 0 '----':alis(@@)",
                                      "send 1 -1", "dispose", "dispose", "dispose alias"}));
}

TEST_F(FinderUpdate, IsNotSentAboutWhatHasNoAlias) {
    pretended.aliasAnswer = -43;
    EXPECT_EQ(platform::macos::sendFinderUpdate(std::nullopt), -43);
    EXPECT_EQ(pretended.calls, Calls{"alias of "});
}

TEST_F(FinderUpdate, LetsTheAliasGoWhenTheEventCannotBeMade) {
    pretended.buildAnswer = -50;
    EXPECT_EQ(platform::macos::sendFinderUpdate("/a"), -50);
    EXPECT_EQ(pretended.calls.back(), "dispose alias");
    EXPECT_EQ(std::ranges::count(pretended.calls, "dispose"), 0);
}

TEST_F(FinderUpdate, TellsTheStatusOfTheSending) {
    pretended.sendAnswer = -600;
    EXPECT_EQ(platform::macos::sendFinderUpdate("/a"), -600);
    EXPECT_EQ(pretended.calls.back(), "dispose alias");
}

}  // namespace
