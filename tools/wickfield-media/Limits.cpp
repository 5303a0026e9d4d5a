#include "tools/wickfield-media/Limits.h"

#include <sys/resource.h>

#include <csignal>

// The sanitizers reserve more memory than any machine has.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define WICKFIELD_MEDIA_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define WICKFIELD_MEDIA_SANITIZED 1
#endif
#endif

namespace wickfield_media {

namespace {

#ifdef WICKFIELD_MEDIA_SANITIZED
constexpr bool limitsMemory = false;
#else
constexpr bool limitsMemory = true;
#endif

constexpr rlim_t mostMemory = rlim_t{2} << 30U;  // bytes
constexpr rlim_t mostSeconds = 10;
constexpr rlim_t mostWritten = rlim_t{64} << 10U;  // bytes in a file, which standard output may be

template <typename Resource>
void limit(Resource resource, rlim_t most) {
    rlimit present{};
    if (::getrlimit(resource, &present) == 0 && (present.rlim_cur == RLIM_INFINITY || present.rlim_cur > most)) {
        present.rlim_cur = most;
        ::setrlimit(resource, &present);
    }
}

}  // namespace

void limitProcess() {
    // Whoever writes to a file, as a cache of fonts, gets an error in place of a signal.
    std::signal(SIGXFSZ, SIG_IGN);
    if (limitsMemory) {
        limit(RLIMIT_AS, mostMemory);
    }
    limit(RLIMIT_CPU, mostSeconds);
    limit(RLIMIT_FSIZE, mostWritten);
    limit(RLIMIT_CORE, 0);
}

}  // namespace wickfield_media
