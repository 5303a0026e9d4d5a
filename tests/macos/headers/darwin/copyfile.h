// Darwin's copyfile as far as the services use it, for checks on Linux.
#pragma once

#include <stdint.h>

typedef struct _copyfile_state* copyfile_state_t;
typedef uint32_t copyfile_flags_t;

#define COPYFILE_ACL (1 << 0)
#define COPYFILE_STAT (1 << 1)
#define COPYFILE_XATTR (1 << 2)
#define COPYFILE_DATA (1 << 3)
#define COPYFILE_SECURITY (COPYFILE_STAT | COPYFILE_ACL)
#define COPYFILE_METADATA (COPYFILE_SECURITY | COPYFILE_XATTR)
#define COPYFILE_ALL (COPYFILE_METADATA | COPYFILE_DATA)
#define COPYFILE_RECURSIVE (1 << 15)
#define COPYFILE_NOFOLLOW_SRC (1 << 18)
#define COPYFILE_NOFOLLOW_DST (1 << 19)
#define COPYFILE_NOFOLLOW (COPYFILE_NOFOLLOW_SRC | COPYFILE_NOFOLLOW_DST)
#define COPYFILE_CLONE (1 << 24)

#ifdef __cplusplus
extern "C" {
#endif
int copyfile(const char* from, const char* to, copyfile_state_t state, copyfile_flags_t flags);
int fcopyfile(int from, int to, copyfile_state_t state, copyfile_flags_t flags);
#ifdef __cplusplus
}
#endif
