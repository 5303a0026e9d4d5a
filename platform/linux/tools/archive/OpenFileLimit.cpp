#include "platform/linux/tools/archive/OpenFileLimit.h"

#include <sys/resource.h>

namespace platform::linux_host {

void allowManyOpenFiles() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        (void)::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

}  // namespace platform::linux_host
