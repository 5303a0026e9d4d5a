#include "lib/KZFileManager/Recycling.h"

#include "lib/KZLocalPaths.h"
#include "lib/base/PathText.h"
#include "platform/ports/Host.h"

namespace KZFileManager {

bool recycle(const std::string& path) {
    const auto trash = KZLocalPaths::trashDirectory();
    return trash && !platform::host().workspace->recycle(kz::deletingLastPathComponent(path),
                                                         kz::lastPathComponent(path), *trash);
}

}  // namespace KZFileManager
