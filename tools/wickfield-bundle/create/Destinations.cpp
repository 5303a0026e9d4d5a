#include "tools/wickfield-bundle/create/Destinations.h"

#include <algorithm>
#include <optional>

#include "lib/base/PathText.h"
#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/create/BundleNames.h"
#include "tools/wickfield-bundle/create/CreateFailure.h"

namespace wickfield_bundle {

namespace {

constexpr std::size_t longestPath = 4096;  // bytes

std::string quoted(const std::string& text) { return "“" + text + "”"; }

[[noreturn]] void refuse(const ProjectItem& item, const std::string& why) {
    throw SenselessProject("“" + item.source + "” cannot go to “" + item.destination + "”: " + why);
}

std::vector<std::string> componentsOf(const ProjectItem& item) {
    const std::string& destination = item.destination;
    if (destination.starts_with('~')) {
        refuse(item, "write /Users/user for the home folder of whoever installs");
    }
    if (!destination.starts_with('/')) {
        refuse(item, "a destination begins with “/”, as in /Library/Audio/Plug-Ins/VST3/Name.vst3");
    }
    if (destination.size() > longestPath) {
        refuse(item, "the path is too long");
    }
    auto components = kz::pathComponents(destination);
    std::erase(components, "/");
    return components;
}

void checkComponents(const ProjectItem& item, const std::vector<std::string>& components) {
    for (const std::string& component : components) {
        if (component == "." || component == "..") {
            refuse(item, "write the destination without " + quoted(component));
        }
        if (const std::string objection = objectionToFileName(component); !objection.empty()) {
            refuse(item, quoted(component) + " " + objection);
        }
    }
}

bool isInstalledAsOne(const std::string& source) {
    return !platform::host().files->isFolder(source) || platform::host().workspace->isFilePackage(source);
}

PlacedItem placed(const ProjectItem& item) {
    if (!platform::host().files->fileExists(item.source)) {
        throw CreateFailure("“" + item.source + "” is not there, and was to go to “" + item.destination + "”");
    }
    auto components = componentsOf(item);
    if (components.empty()) {
        refuse(item, "that is the disk itself; name the place on it that is meant");
    }
    if (item.destination.ends_with('/')) {
        components.push_back(kz::lastPathComponent(item.source));
    }
    checkComponents(item, components);
    if (isInstalledAsOne(item.source)) {
        if (components.size() == 1) {
            refuse(item, "an item has to lie in a folder, as in /Library/" + components.front());
        }
        if (components.back().starts_with('.')) {
            refuse(item,
                   "an installation passes over items whose names begin with “.”; end it in “/” to put the item into "
                   "that folder");
        }
    }
    std::string place;
    for (const std::string& component : components) {
        place = kz::appendPathComponent(place, component);
    }
    return {item.source, place};
}

// What the tree has where the item or a folder on its way is to be; none when it leaves the room for it.
void checkRoomInTree(const std::string& tree, const PlacedItem& item) {
    std::string path = tree;
    const auto components = kz::pathComponents(item.place);
    for (std::size_t at = 0; at < components.size(); ++at) {
        path = kz::appendPathComponent(path, components[at]);
        const auto attributes = platform::host().files->attributes(path);
        if (!attributes) {
            return;
        }
        if (at + 1 == components.size()) {
            throw SenselessProject("“" + item.source + "” cannot go to “/" + item.place +
                                   "”: the tree has something there already, “" + path + "”; leave out one of the two");
        }
        if (attributes->type != platform::FileType::folder) {
            throw SenselessProject("“" + item.source + "” cannot go to “/" + item.place + "”: in the tree “" + path +
                                   "” is no folder");
        }
    }
}

}  // namespace

std::vector<PlacedItem> placeItems(const Project& project) {
    std::vector<PlacedItem> items;
    for (const ProjectItem& item : project.items) {
        items.push_back(placed(item));
        if (project.tree) {
            checkRoomInTree(*project.tree, items.back());
        }
    }
    std::ranges::stable_sort(items, {}, &PlacedItem::place);
    const auto twice = std::ranges::adjacent_find(items, {}, &PlacedItem::place);
    if (twice != items.end()) {
        throw SenselessProject("“" + twice->source + "” and “" + std::next(twice)->source + "” both go to “/" +
                               twice->place + "”; leave out one of the two");
    }
    return items;
}

}  // namespace wickfield_bundle
