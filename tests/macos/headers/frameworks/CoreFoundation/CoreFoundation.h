// The preferences that the contract tests clear, for checks on hosts without CoreFoundation.
#pragma once

#include <CoreServices/CoreFoundationSubset.h>

typedef const struct __CFArray* CFArrayRef;
typedef const struct __CFDictionary* CFDictionaryRef;

#ifdef __cplusplus
extern "C" {
#endif
extern const CFStringRef kCFPreferencesCurrentApplication;
extern const CFStringRef kCFPreferencesCurrentUser;
extern const CFStringRef kCFPreferencesAnyHost;
CFArrayRef CFPreferencesCopyKeyList(CFStringRef application, CFStringRef user, CFStringRef host);
void CFPreferencesSetMultiple(CFDictionaryRef toSet, CFArrayRef toRemove, CFStringRef application, CFStringRef user,
                              CFStringRef host);
Boolean CFPreferencesAppSynchronize(CFStringRef application);
#ifdef __cplusplus
}
#endif
