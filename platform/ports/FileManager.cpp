#include "platform/ports/FileManager.h"

namespace platform {

bool FileManager::visitDirectory(const std::string& path, VisitSizes sizes,
                                 const std::function<void(const VisitedEntry&)>& visit) {
    const auto entries = contentsOfDirectory(path);
    if (!entries) {
        return false;
    }
    for (const auto& entry : *entries) {
        VisitedEntry visited{.name = entry.name, .type = entry.type, .size = 0};
        if (sizes == VisitSizes::yes && entry.type != FileType::folder) {
            const auto known = attributes(path + "/" + entry.name);
            visited.type = known ? known->type : entry.type;
            visited.size = known && known->type != FileType::folder ? known->size : 0;
        }
        visit(visited);
    }
    return true;
}

}  // namespace platform
