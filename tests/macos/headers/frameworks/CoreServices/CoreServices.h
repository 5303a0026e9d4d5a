// The file references, Apple Events and Launch Services that the services use, for checks on hosts without them.
#pragma once

#include <CoreServices/CoreFoundationSubset.h>

#pragma pack(push, 2)
typedef struct FSRef {
    UInt8 hidden[80];
} FSRef;
typedef struct AliasRecord {
    OSType userType;
    unsigned short aliasSize;
} AliasRecord;
typedef struct AEDesc {
    DescType descriptorType;
    struct OpaqueAEDataStorageType** dataHandle;
} AEDesc;
#pragma pack(pop)
typedef AliasRecord** AliasHandle;
typedef AEDesc AppleEvent;
typedef struct AEBuildError AEBuildError;
typedef FourCharCode AEEventClass;
typedef FourCharCode AEEventID;
typedef SInt16 AEReturnID;
typedef SInt32 AETransactionID;
typedef SInt32 AESendMode;

enum { typeNull = 'null', typeApplSignature = 'sign' };
enum { kAutoGenerateReturnID = -1, kAnyTransactionID = 0, kAEDefaultTimeout = -1, kAENoReply = 1 };

#ifdef __cplusplus
extern "C" {
#endif
Boolean CFURLGetFSRef(CFURLRef url, FSRef* item);
OSErr FSNewAliasMinimal(const FSRef* target, AliasHandle* alias);
void DisposeHandle(Handle handle);
OSStatus AEBuildAppleEvent(AEEventClass eventClass, AEEventID eventID, DescType addressType, const void* addressData,
                           Size addressLength, AEReturnID returnID, AETransactionID transactionID, AppleEvent* result,
                           AEBuildError* error, const char* format, ...);
OSStatus AESendMessage(const AppleEvent* event, AppleEvent* reply, AESendMode mode, long timeOutInTicks);
OSErr AEDisposeDesc(AEDesc* descriptor);
OSStatus LSRegisterURL(CFURLRef url, Boolean update);
#ifdef __cplusplus
}
#endif
