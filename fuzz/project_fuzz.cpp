// Project files of makers: whatever they hold, there is a whole project or a list of lines about what is wrong.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "tools/wickfield-bundle/project/ProjectFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view contents(reinterpret_cast<const char*>(data), size);
    try {
        const auto project = wickfield_bundle::parseProject(contents, "folder/wickfield.json");
        for (const auto& item : project.items) {
            if (item.source.empty() || item.source.find('\0') != std::string::npos) {
                std::abort();
            }
        }
    } catch (const wickfield_bundle::ProjectProblems& problems) {
        for (const auto& line : problems.lines()) {
            if (!line.starts_with("folder/wickfield.json:")) {
                std::abort();
            }
        }
    }
    return 0;
}
