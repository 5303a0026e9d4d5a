// The types and calls of CoreFoundation that the services use, for checks on hosts without it.
#pragma once

#include <stdint.h>

typedef unsigned char Boolean;
typedef unsigned char UInt8;
typedef uint32_t UInt32;
typedef int16_t SInt16;
typedef int32_t SInt32;
typedef int32_t OSStatus;
typedef int16_t OSErr;
typedef uint32_t FourCharCode;
typedef FourCharCode OSType;
typedef FourCharCode DescType;
typedef long Size;
typedef char** Handle;

typedef long CFIndex;
typedef uint32_t CFStringEncoding;
typedef const void* CFTypeRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFString* CFStringRef;
typedef const struct __CFURL* CFURLRef;

enum { kCFStringEncodingUTF8 = 0x08000100 };
enum { noErr = 0, fnfErr = -43 };

#ifdef __cplusplus
extern "C" {
#endif
extern const CFAllocatorRef kCFAllocatorDefault;
void CFRelease(CFTypeRef object);
CFIndex CFStringGetLength(CFStringRef text);
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);
Boolean CFStringGetCString(CFStringRef text, char* buffer, CFIndex size, CFStringEncoding encoding);
CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length,
                                                 Boolean isDirectory);
#ifdef __cplusplus
}
#endif
