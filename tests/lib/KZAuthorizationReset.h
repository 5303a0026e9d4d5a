#pragma once

#include <memory>

#include "lib/KZAuthorization.h"

// For a scope there is no shared instance before the first call, nor one left after the last.
class KZAuthorizationReset {
public:
    KZAuthorizationReset() { forget(); }
    ~KZAuthorizationReset() { forget(); }
    KZAuthorizationReset(const KZAuthorizationReset&) = delete;
    KZAuthorizationReset& operator=(const KZAuthorizationReset&) = delete;

private:
    static void forget() {
        delete KZAuthorization::sharedAuth;
        KZAuthorization::sharedAuth = nullptr;
    }
};
