#include "platform/posix/Pipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <utility>

namespace platform::posix {

namespace {

bool openPipe(int (&ends)[2]) {
#if defined(__linux__)
    return ::pipe2(ends, O_CLOEXEC) == 0;
#else
    if (::pipe(ends) != 0) {
        return false;
    }
    ::fcntl(ends[0], F_SETFD, FD_CLOEXEC);
    ::fcntl(ends[1], F_SETFD, FD_CLOEXEC);
    return true;
#endif
}

}  // namespace

Descriptor aboveStandardStreams(Descriptor descriptor) {
    if (!descriptor || descriptor.get() > STDERR_FILENO) {
        return descriptor;
    }
    return Descriptor(::fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

std::optional<Pipe> makePipe() {
    int ends[2] = {-1, -1};
    if (!openPipe(ends)) {
        return std::nullopt;
    }
    Descriptor readEnd(ends[0]);
    Descriptor writeEnd(ends[1]);
    Pipe pipe{aboveStandardStreams(std::move(readEnd)), aboveStandardStreams(std::move(writeEnd))};
    if (!pipe.readEnd || !pipe.writeEnd) {
        return std::nullopt;
    }
    return pipe;
}

}  // namespace platform::posix
