// Authorization Services as far as the services use them, for checks on hosts without them.
#pragma once

#include <CoreServices/CoreFoundationSubset.h>
#include <stddef.h>
#include <stdio.h>

typedef const struct AuthorizationOpaqueRef* AuthorizationRef;
typedef UInt32 AuthorizationFlags;
typedef const char* AuthorizationString;
typedef struct {
    AuthorizationString name;
    size_t valueLength;
    void* value;
    UInt32 flags;
} AuthorizationItem;
typedef struct {
    UInt32 count;
    AuthorizationItem* items;
} AuthorizationItemSet;
typedef AuthorizationItemSet AuthorizationRights;
typedef AuthorizationItemSet AuthorizationEnvironment;

enum {
    kAuthorizationFlagDefaults = 0,
    kAuthorizationFlagInteractionAllowed = 1 << 0,
    kAuthorizationFlagExtendRights = 1 << 1,
    kAuthorizationFlagPreAuthorize = 1 << 4
};
enum { errAuthorizationSuccess = 0, errAuthorizationInvalidSet = -60001, errAuthorizationToolExecuteFailure = -60031 };

#ifdef __cplusplus
extern "C" {
#endif
OSStatus AuthorizationCreate(const AuthorizationRights* rights, const AuthorizationEnvironment* environment,
                             AuthorizationFlags flags, AuthorizationRef* made);
OSStatus AuthorizationFree(AuthorizationRef authorization, AuthorizationFlags flags);
OSStatus AuthorizationCopyRights(AuthorizationRef authorization, const AuthorizationRights* rights,
                                 const AuthorizationEnvironment* environment, AuthorizationFlags flags,
                                 AuthorizationRights** authorizedRights);
#ifdef __cplusplus
}
#endif
