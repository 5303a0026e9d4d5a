// Grand Central Dispatch's global queues, for checks on Linux.
#pragma once

#include <stdint.h>

typedef struct dispatch_queue_s* dispatch_queue_t;
typedef void (*dispatch_function_t)(void* context);

#define DISPATCH_QUEUE_PRIORITY_DEFAULT 0

#ifdef __cplusplus
extern "C" {
#endif
dispatch_queue_t dispatch_get_global_queue(intptr_t identifier, uintptr_t flags);
void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work);
#ifdef __cplusplus
}
#endif
