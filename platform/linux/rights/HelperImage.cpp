#include "platform/linux/rights/HelperImage.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string_view>

#include "platform/posix/Pipe.h"
#include "platform/posix/WriteAll.h"

// The build names the file whose bytes these are.
asm(".pushsection .rodata\n"
    ".global wickfield_helper_begin\n"
    ".global wickfield_helper_end\n"
    ".balign 16\n"
    "wickfield_helper_begin:\n"
    ".incbin \"" WICKFIELD_HELPER_FILE
    "\"\n"
    "wickfield_helper_end:\n"
    ".byte 0\n"
    ".popsection\n");

extern "C" {
extern const char wickfield_helper_begin[];  // NOLINT(readability-identifier-naming)
extern const char wickfield_helper_end[];    // NOLINT(readability-identifier-naming)
}

namespace platform::rights {

namespace {

std::string_view helperBytes() {
    return {wickfield_helper_begin, static_cast<std::size_t>(wickfield_helper_end - wickfield_helper_begin)};
}

// Kernels that can refuse to execute memory want to be told that this is meant to be executed.
int makeMemory() {
#if !defined(MFD_EXEC)
    constexpr unsigned MFD_EXEC = 0x0010U;
#endif
    constexpr unsigned flags = MFD_CLOEXEC | MFD_ALLOW_SEALING;
    const int memory = ::memfd_create("wickfield-rights", flags | MFD_EXEC);
    return memory < 0 && errno == EINVAL ? ::memfd_create("wickfield-rights", flags) : memory;
}

std::string pathOf(int descriptor) {
    return "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(descriptor);
}

}  // namespace

// A file that is open for writing cannot be executed, so what is kept is a second, read-only way to it. Nobody may open
// it for reading once more: a process that runs what its user cannot read can never be traced by that user.
HelperImage::HelperImage() {
    constexpr int seals = F_SEAL_WRITE | F_SEAL_GROW | F_SEAL_SHRINK | F_SEAL_SEAL;
    const posix::Descriptor memory(makeMemory());
    std::string_view bytes = helperBytes();
    if (!memory || posix::writeAll(memory.get(), bytes) != 0 || ::fcntl(memory.get(), F_ADD_SEALS, seals) != 0) {
        m_error = errno;
        return;
    }
    m_memory =
        posix::aboveStandardStreams(posix::Descriptor(::open(pathOf(memory.get()).c_str(), O_RDONLY | O_CLOEXEC)));
    if (!m_memory || ::fchmod(memory.get(), S_IXUSR) != 0) {
        m_error = errno;
        return;
    }
    m_path = pathOf(m_memory.get());
}

}  // namespace platform::rights
