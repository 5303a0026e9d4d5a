#include "tools/kzfile/Algorithms.h"

#include <algorithm>
#include <array>

#include "lib/base/Text.h"
#include "tools/kzfile/Command.h"

namespace kzfile {

namespace {

using KZFileManager::FileCopyVerification;
using platform::DigestKind;

constexpr std::array<Algorithm, 4> algorithms{{{"md5", DigestKind::md5, FileCopyVerification::md5},
                                               {"sha1", DigestKind::sha1, FileCopyVerification::sha1},
                                               {"sha256", DigestKind::sha256, FileCopyVerification::sha256},
                                               {"sha512", DigestKind::sha512, FileCopyVerification::sha512}}};

}  // namespace

const Algorithm& algorithmNamed(const std::string& name) {
    const std::string wanted = kz::replaceAll(kz::lowercased(name), std::string_view("-"), "");
    const auto* const found =
        std::ranges::find_if(algorithms, [&](const Algorithm& algorithm) { return wanted == algorithm.name; });
    if (found == algorithms.end()) {
        throw UsageError("there is no algorithm " + name + ", only md5, sha1, sha256 and sha512");
    }
    return *found;
}

}  // namespace kzfile
