// What Darwin's C library declares in headers that Linux has too. Seen before each source that is checked on Linux as
// if it were a Mac.
#pragma once

#include <stdint.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#define st_flags st_mode  // of the same type; a lock is the sticky bit here
#define UF_IMMUTABLE S_ISVTX
#define UF_APPEND 0x00040000
#define SF_IMMUTABLE 0x00020000
#define SF_APPEND 0x00080000
#define RENAME_EXCL 0x00000004
#define _CS_DARWIN_USER_CACHE_DIR 65538
#ifndef ENOATTR
#define ENOATTR 93
#endif

#ifdef __cplusplus
extern "C" {
#endif
int lchflags(const char* path, uint32_t flags);
int renamex_np(const char* from, const char* to, unsigned int flags);
#ifdef __cplusplus
}
#endif
