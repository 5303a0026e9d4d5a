#include "platform/linux/rights/helper/RenameOnly.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>

namespace platform::rights {

namespace {

#if defined(__x86_64__)
constexpr std::uint32_t machine = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t machine = AUDIT_ARCH_AARCH64;
#elif defined(__riscv) && __riscv_xlen == 64
constexpr std::uint32_t machine = AUDIT_ARCH_RISCV64;
#else
constexpr std::uint32_t machine = 0;  // the calls below are not known to be all there are
#endif

constexpr std::uint32_t firstForeign = 0x40000000;  // where x86 has a second set of numbers
constexpr std::uint32_t changingModeByFlags = 452;  // fchmodat2 of newer headers

constexpr std::array refused {
#if defined(SYS_mkdir)
    SYS_creat, SYS_mkdir, SYS_mknod, SYS_symlink, SYS_link, SYS_unlink, SYS_rmdir, SYS_chmod, SYS_chown, SYS_lchown,
        SYS_utime, SYS_utimes, SYS_futimesat,
#endif
        SYS_openat2, SYS_mkdirat, SYS_mknodat, SYS_symlinkat, SYS_linkat, SYS_unlinkat, SYS_truncate, SYS_fchmod,
        SYS_fchmodat, SYS_fchown, SYS_fchownat, SYS_utimensat, SYS_setxattr, SYS_lsetxattr, SYS_fsetxattr,
        SYS_removexattr, SYS_lremovexattr, SYS_fremovexattr,
};

#if defined(SYS_open)
constexpr std::uint32_t opening = SYS_open;
#else
constexpr std::uint32_t opening = SYS_openat;
#endif

constexpr std::size_t placeOfArgument(std::size_t index) {
    return offsetof(seccomp_data, args) + index * sizeof(std::uint64_t);
}

// The jumps go forward only, to the places that are named here.
class Filter {
public:
    constexpr Filter() {
        load(offsetof(seccomp_data, arch));
        jump(BPF_JEQ, machine, m_next + 1, refuse);
        load(offsetof(seccomp_data, nr));
        jump(BPF_JGE, firstForeign, refuse, m_next + 1);
        jump(BPF_JEQ, SYS_openat, openAt, m_next + 1);
        jump(BPF_JEQ, opening, open, m_next + 1);
        jump(BPF_JEQ, changingModeByFlags, refuse, m_next + 1);
        for (const auto call : refused) {
            jump(BPF_JEQ, static_cast<std::uint32_t>(call), refuse, m_next + 1);
        }
        jump(BPF_JGE, 0, allow, allow);
        load(placeOfArgument(1));  // open
        jump(BPF_JSET, change, refuse, allow);
        load(placeOfArgument(2));  // openAt
        jump(BPF_JSET, change, refuse, allow);
        end(SECCOMP_RET_ALLOW);
        end(SECCOMP_RET_ERRNO | EPERM);
    }

    int install() const noexcept {
        // The kernel copies it, and changes nothing here.
        const sock_fprog program{.len = length, .filter = const_cast<sock_filter*>(m_steps.data())};
        return ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0 ? 0 : errno;
    }

private:
    static constexpr std::size_t open = 8 + refused.size();
    static constexpr std::size_t openAt = open + 2;
    static constexpr std::size_t allow = openAt + 2;
    static constexpr std::size_t refuse = allow + 1;
    static constexpr unsigned short length = refuse + 1;
    static constexpr std::uint32_t change = O_ACCMODE | O_CREAT | O_TRUNC;

    constexpr void load(std::size_t place) {
        m_steps[m_next++] = {BPF_LD | BPF_W | BPF_ABS, 0, 0, static_cast<std::uint32_t>(place)};
    }
    constexpr void jump(unsigned condition, std::uint32_t value, std::size_t ifTrue, std::size_t ifFalse) {
        const std::size_t from = m_next + 1;
        m_steps[m_next++] = {static_cast<std::uint16_t>(BPF_JMP | BPF_K | condition),
                             static_cast<std::uint8_t>(ifTrue - from), static_cast<std::uint8_t>(ifFalse - from),
                             value};
    }
    constexpr void end(std::uint32_t result) { m_steps[m_next++] = {BPF_RET | BPF_K, 0, 0, result}; }

    std::array<sock_filter, length> m_steps{};
    std::size_t m_next = 0;
};

constexpr Filter filter;

}  // namespace

bool canBeHeldToRenaming() {
    static const bool can = [] {
        constexpr std::uint32_t action = SECCOMP_RET_ERRNO;
        return machine != 0 && ::syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &action) == 0;
    }();
    return can;
}

int holdToRenaming() noexcept { return filter.install(); }

}  // namespace platform::rights
