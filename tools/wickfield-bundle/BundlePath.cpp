#include "tools/wickfield-bundle/BundlePath.h"

#include <filesystem>
#include <system_error>

#include "lib/base/PathText.h"

namespace wickfield_bundle {

std::string bundlePathFor(const std::string& name) {
    std::error_code error;
    const auto path = std::filesystem::weakly_canonical(std::filesystem::absolute(name, error), error);
    return error ? name : kz::appendPathComponent(path.string(), "");
}

}  // namespace wickfield_bundle
