// The console user of the dynamic store, for checks on hosts without it.
#pragma once

#include <CoreServices/CoreFoundationSubset.h>
#include <sys/types.h>

typedef const struct __SCDynamicStore* SCDynamicStoreRef;

#ifdef __cplusplus
extern "C" {
#endif
CFStringRef SCDynamicStoreCopyConsoleUser(SCDynamicStoreRef store, uid_t* uid, gid_t* gid);
#ifdef __cplusplus
}
#endif
