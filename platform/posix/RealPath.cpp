#include "platform/posix/RealPath.h"

#include <cstdlib>
#include <memory>

#include "platform/posix/PathParts.h"

namespace platform::posix {

std::string realPath(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(systemPath(path), nullptr), &std::free);
    return real ? std::string(real.get()) : std::string();
}

}  // namespace platform::posix
