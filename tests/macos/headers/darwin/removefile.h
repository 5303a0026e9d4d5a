// Darwin's removefile as far as the services use it, for checks on Linux.
#pragma once

#include <stdint.h>

typedef struct _removefile_state* removefile_state_t;
typedef uint32_t removefile_flags_t;

#define REMOVEFILE_RECURSIVE (1 << 0)

#ifdef __cplusplus
extern "C" {
#endif
int removefile(const char* path, removefile_state_t state, removefile_flags_t flags);
#ifdef __cplusplus
}
#endif
