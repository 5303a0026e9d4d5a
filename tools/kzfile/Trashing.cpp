#include "tools/kzfile/Trashing.h"

#include "lib/KZFileManager.h"
#include "lib/KZLocalPaths.h"
#include "lib/base/PathText.h"
#include "tools/kzfile/Paths.h"
#include "tools/kzfile/ReportingHost.h"

namespace kzfile {

std::string trashItem(const std::string& name) {
    const std::string last = kz::lastPathComponent(name);
    if (last == "." || last == "..") {
        return name + ": a folder goes to the Trash by its name only";
    }
    const std::string path = resolvedPath(name);
    const ItemKind kind = kindOf(path);
    if (kind == ItemKind::missing) {
        return missingText(name);
    }
    if (kind == ItemKind::danglingLink) {
        return name + ": is a link that leads nowhere, and stays";
    }
    if (KZLocalPaths::isPathSystemDirectory(path)) {
        return name + ": is one of the system's folders, or lies in one, and stays";
    }
    if (!KZLocalPaths::trashDirectory()) {
        return name + ": there is no Trash, as nobody is logged in at this machine's console";
    }
    reports().clear();
    if (KZFileManager::trashFile(path, ShouldAuth::no)) {
        return "";
    }
    return reports().lastFailure().value_or(name + ": cannot be moved to the Trash");
}

}  // namespace kzfile
