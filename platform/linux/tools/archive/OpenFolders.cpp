#include "platform/linux/tools/archive/OpenFolders.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <utility>

#include "platform/linux/tools/archive/FileBytes.h"

namespace platform::linux_host {

int OpenFolders::open(std::string_view path) {
    std::size_t depth = 0;
    for (std::string_view rest = path; !rest.empty(); ++depth) {
        const std::string_view name = rest.substr(0, rest.find('/'));
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
        if (depth < m_steps.size() && m_steps[depth].name == name) {
            continue;
        }
        m_steps.resize(std::min(depth, m_steps.size()));
        enter(name, path);
    }
    m_steps.resize(depth);
    return innermost();
}

void OpenFolders::enter(std::string_view name, std::string_view path) {
    std::string text(name);
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    const int outer = innermost();
    // Mostly it is a new one.
    if (::mkdirat(outer, text.c_str(), 0777) != 0 && errno != EEXIST) {
        failWithErrno("cannot make", std::string(path), errno);
    }
    posix::Descriptor folder(::openat(outer, text.c_str(), flags));
    if (!folder) {
        failWithErrno("cannot open", std::string(path), errno);
    }
    m_steps.push_back({.name = std::move(text), .folder = std::move(folder)});
}

}  // namespace platform::linux_host
