// Preloaded into a program: makes one of its calls on files fail, or kills the program there.
//
// FAULT_AT      which call, counted from 1
// FAULT_ERRNO   the error number that it fails with
// FAULT_KILL    when set, the process is killed instead
// FAULT_REPORT  a file that gets the name of the call when it is reached; made by the caller
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

int number(const char* variable) {
    const char* text = std::getenv(variable);
    return text != nullptr ? std::atoi(text) : 0;
}

void report(const char* call) {
    const char* path = std::getenv("FAULT_REPORT");
    if (path == nullptr) {
        return;
    }
    const long file = ::syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (file >= 0) {
        ::syscall(SYS_write, file, call, std::strlen(call));
        ::syscall(SYS_close, file);
    }
}

// True when this call is the one that is to fail; errno is set then.
bool isFault(const char* call) {
    static std::atomic<int> calls{0};
    static const int at = number("FAULT_AT");
    if (++calls != at) {
        return false;
    }
    report(call);
    if (std::getenv("FAULT_KILL") != nullptr) {
        ::kill(::getpid(), SIGKILL);
    }
    errno = number("FAULT_ERRNO");
    return true;
}

template <class Function>
Function next(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

// Names, types and lists cannot stand in parentheses. NOLINTBEGIN(bugprone-macro-parentheses)
#define FAULTY(result, name, parameters, arguments)                       \
    extern "C" result name parameters {                                   \
        using Function = result(*) parameters;                            \
        static const Function real = next<Function>(#name);               \
        return isFault(#name) ? static_cast<result>(-1) : real arguments; \
    }
// NOLINTEND(bugprone-macro-parentheses)

FAULTY(int, mkdir, (const char* path, mode_t mode), (path, mode))
FAULTY(int, mkdirat, (int folder, const char* path, mode_t mode), (folder, path, mode))
FAULTY(int, link, (const char* from, const char* to), (from, to))
FAULTY(int, linkat, (int one, const char* from, int two, const char* to, int flags), (one, from, two, to, flags))
FAULTY(int, rename, (const char* from, const char* to), (from, to))
FAULTY(int, renameat2, (int one, const char* from, int two, const char* to, unsigned flags),
       (one, from, two, to, flags))
FAULTY(ssize_t, write, (int file, const void* bytes, size_t count), (file, bytes, count))
FAULTY(ssize_t, copy_file_range, (int in, off64_t* from, int out, off64_t* to, size_t count, unsigned flags),
       (in, from, out, to, count, flags))
FAULTY(int, ftruncate, (int file, off_t size), (file, size))
FAULTY(int, unlink, (const char* path), (path))
FAULTY(int, unlinkat, (int folder, const char* path, int flags), (folder, path, flags))
FAULTY(int, rmdir, (const char* path), (path))
FAULTY(int, fchmod, (int file, mode_t mode), (file, mode))
FAULTY(int, fchmodat, (int folder, const char* path, mode_t mode, int flags), (folder, path, mode, flags))
FAULTY(int, fchown, (int file, uid_t user, gid_t group), (file, user, group))
FAULTY(int, futimens, (int file, const struct timespec times[2]), (file, times))
FAULTY(int, utimensat, (int folder, const char* path, const struct timespec times[2], int flags),
       (folder, path, times, flags))
FAULTY(int, fsetxattr, (int file, const char* name, const void* value, size_t size, int flags),
       (file, name, value, size, flags))
FAULTY(int, symlink, (const char* target, const char* path), (target, path))
FAULTY(int, symlinkat, (const char* target, int folder, const char* path), (target, folder, path))

extern "C" int open(const char* path, int flags, ...) {
    using Function = int (*)(const char*, int, ...);
    static const auto real = next<Function>("open");
    va_list more;
    va_start(more, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, mode_t) : 0;
    va_end(more);
    return isFault("open") ? -1 : real(path, flags, mode);
}

extern "C" int openat(int folder, const char* path, int flags, ...) {
    using Function = int (*)(int, const char*, int, ...);
    static const auto real = next<Function>("openat");
    va_list more;
    va_start(more, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, mode_t) : 0;
    va_end(more);
    return isFault("openat") ? -1 : real(folder, path, flags, mode);
}

extern "C" int ioctl(int file, unsigned long request, ...) {
    using Function = int (*)(int, unsigned long, ...);
    static const auto real = next<Function>("ioctl");
    va_list more;
    va_start(more, request);
    void* const argument = va_arg(more, void*);
    va_end(more);
    return isFault("ioctl") ? -1 : real(file, request, argument);
}
