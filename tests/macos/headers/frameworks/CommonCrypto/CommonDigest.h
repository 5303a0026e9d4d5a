// Declarations for checks on hosts without CommonCrypto.
#pragma once

#include <stdint.h>

typedef uint32_t CC_LONG;

enum {
    CC_MD5_DIGEST_LENGTH = 16,
    CC_SHA1_DIGEST_LENGTH = 20,
    CC_SHA256_DIGEST_LENGTH = 32,
    CC_SHA512_DIGEST_LENGTH = 64
};

typedef struct CC_MD5state_st {
    CC_LONG state[22];
    int num;
} CC_MD5_CTX;
typedef struct CC_SHA1state_st {
    CC_LONG state[23];
    int num;
} CC_SHA1_CTX;
typedef struct CC_SHA256state_st {
    CC_LONG state[26];
} CC_SHA256_CTX;
typedef struct CC_SHA512state_st {
    uint64_t state[26];
} CC_SHA512_CTX;

#ifdef __cplusplus
extern "C" {
#endif
int CC_MD5_Init(CC_MD5_CTX* context);
int CC_MD5_Update(CC_MD5_CTX* context, const void* data, CC_LONG length);
int CC_MD5_Final(unsigned char* digest, CC_MD5_CTX* context);
int CC_SHA1_Init(CC_SHA1_CTX* context);
int CC_SHA1_Update(CC_SHA1_CTX* context, const void* data, CC_LONG length);
int CC_SHA1_Final(unsigned char* digest, CC_SHA1_CTX* context);
int CC_SHA256_Init(CC_SHA256_CTX* context);
int CC_SHA256_Update(CC_SHA256_CTX* context, const void* data, CC_LONG length);
int CC_SHA256_Final(unsigned char* digest, CC_SHA256_CTX* context);
int CC_SHA512_Init(CC_SHA512_CTX* context);
int CC_SHA512_Update(CC_SHA512_CTX* context, const void* data, CC_LONG length);
int CC_SHA512_Final(unsigned char* digest, CC_SHA512_CTX* context);
#ifdef __cplusplus
}
#endif
