#include "tools/wickfield-bundle/check/LocalizedFile.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "lib/base/PathText.h"
#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/check/NamedResource.h"
#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {

namespace {

constexpr std::string_view folderType = ".lproj";
constexpr std::array<std::string_view, 3> languagesOfAll{"en", "English", "Base"};
constexpr std::size_t mostNamed = 5;  // languages in a reason

// As the look-up of a name and a type has it.
std::string fileOf(const std::string& name) {
    const std::string type = kz::pathExtension(name);
    const std::string base = kz::deletingPathExtension(name);
    return type.empty() ? base : base + "." + type;
}

std::vector<std::string> languageFolders(const std::string& resources) {
    std::vector<std::string> names;
    if (const auto entries = platform::host().files->contentsOfDirectory(resources)) {
        for (const auto& entry : *entries) {
            if (entry.name.ends_with(folderType)) {
                names.push_back(entry.name);
            }
        }
    }
    std::ranges::sort(names);
    return names;
}

// Of a path as findInEveryLanguage gives it.
std::string languageOf(const CheckedBundle& bundle, const std::string& path) {
    const std::string below = placeOf(bundle, path).substr(bundle.resourcesPrefix.size());
    return below.substr(0, below.find(folderType));
}

}  // namespace

LocalizedFile findInEveryLanguage(const std::string& name) {
    auto& files = *platform::host().files;
    const std::string resources = platform::host().bundle->resourcePath();
    const std::string file = fileOf(name);
    LocalizedFile found;
    if (file.empty()) {
        return found;
    }
    const std::string common = resources + "/" + file;
    const bool isCommon = files.fileExists(common);
    found.isForEverybody = isCommon;
    for (const std::string& folder : languageFolders(resources)) {
        const std::string path = std::string(resources).append("/").append(folder).append("/").append(file);
        if (!files.fileExists(path)) {
            continue;
        }
        (isCommon ? found.hidden : found.paths).push_back(path);
        const std::string_view language = std::string_view(folder).substr(0, folder.size() - folderType.size());
        found.isForEverybody =
            found.isForEverybody || std::ranges::find(languagesOfAll, language) != languagesOfAll.end();
    }
    if (isCommon) {
        found.paths.push_back(common);
    }
    return found;
}

void checkLanguages(const CheckedBundle& bundle, const std::string& key, const LocalizedFile& file,
                    Findings& findings) {
    for (const std::string& path : file.hidden) {
        add(findings, "resource-language-hidden", placeOf(bundle, path),
            "The one in Contents/Resources itself goes before it, in every language.");
    }
    if (file.isForEverybody || file.paths.empty()) {
        return;
    }
    std::string languages;
    for (std::size_t index = 0; index < std::min(file.paths.size(), mostNamed); ++index) {
        languages += (index == 0 ? "" : ", ") + languageOf(bundle, file.paths[index]);
    }
    add(findings, "resource-language-missing", placeOf(bundle, file.paths.front()),
        "What " + key + " names is there for " + languages + (file.paths.size() > mostNamed ? " and more" : "") +
            ", but not for customers of other languages.");
}

}  // namespace wickfield_bundle
