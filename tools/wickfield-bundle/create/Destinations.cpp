#include "tools/wickfield-bundle/create/Destinations.h"

#include <algorithm>
#include <optional>

#include "lib/base/PathText.h"
#include "platform/linux/services/workspace/Packages.h"
#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/create/BundleNames.h"
#include "tools/wickfield-bundle/create/CreateFailure.h"

namespace wickfield_bundle {

namespace linux_host = platform::linux_host;

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

// Which of the components is the first that an installation copies whole: a package, or the item itself unless it is a
// folder that an installation looks into.
std::optional<std::size_t> copiedWhole(const std::vector<std::string>& components, const std::string& source) {
    const auto package = std::ranges::find_if(components, linux_host::hasPackageExtension);
    if (package != components.end()) {
        return static_cast<std::size_t>(package - components.begin());
    }
    if (platform::host().files->isFolder(source) && !platform::host().workspace->isFilePackage(source)) {
        return std::nullopt;
    }
    return components.size() - 1;
}

// What an installation would leave out, or put somewhere else than is meant.
void checkIsInstalled(const ProjectItem& item, const std::vector<std::string>& components) {
    const std::string name = kz::lastPathComponent(item.source);
    if (linux_host::hasPackageExtension(name) && std::ranges::none_of(components, linux_host::hasPackageExtension)) {
        refuse(item, "it would lose its extension; end the destination in “/” to put " + quoted(name) +
                         " into that folder, or in a name with that extension");
    }
    const auto whole = copiedWhole(components, item.source);
    if (!whole) {
        return;
    }
    if (*whole == 0) {
        refuse(item, "an item has to lie in a folder, as in /Library/" + components.front());
    }
    if (components[*whole].starts_with('.')) {
        const bool isFile = *whole + 1 == components.size() && !linux_host::hasPackageExtension(components[*whole]);
        refuse(item, std::string("an installation passes over items whose names begin with “.”") +
                         (isFile ? "; end it in “/” to put the item into that folder" : ""));
    }
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
        const std::string name = kz::lastPathComponent(item.source);
        if (name == "." || name == ".." || name == "/") {
            refuse(item, "write the name that it is to have behind the “/”");
        }
        components.push_back(name);
    }
    checkComponents(item, components);
    checkIsInstalled(item, components);
    std::string place;
    for (const std::string& component : components) {
        place = kz::appendPathComponent(place, component);
    }
    return {item.source, place};
}

// What a folder that is copied has where the item or a folder on its way is to be. `way` is the item's, from the
// folder; `holder` is what people call the folder.
void checkRoom(const std::string& folder, const std::string& way, const PlacedItem& item, const std::string& holder) {
    const std::string start = quoted(item.source) + " cannot go to " + quoted("/" + item.place) + ": ";
    std::string path = folder;
    const auto components = kz::pathComponents(way);
    for (std::size_t at = 0; at < components.size(); ++at) {
        path = kz::appendPathComponent(path, components[at]);
        const auto attributes = platform::host().files->attributes(path);
        if (!attributes) {
            return;
        }
        if (at + 1 == components.size()) {
            throw SenselessProject(start + holder + " has something there already, " + quoted(path) +
                                   "; leave out one of the two");
        }
        if (attributes->type != platform::FileType::folder) {
            throw SenselessProject(start + "in " + holder + " " + quoted(path) + " is no folder");
        }
    }
}

// Of items in the order of their places.
void checkRoomInOthers(const std::vector<PlacedItem>& items) {
    for (const PlacedItem& item : items) {
        for (auto slash = item.place.find('/'); slash != std::string::npos; slash = item.place.find('/', slash + 1)) {
            const auto other = std::ranges::lower_bound(items, item.place.substr(0, slash), {}, &PlacedItem::place);
            if (other->place.size() != slash || !item.place.starts_with(other->place)) {
                continue;
            }
            if (!platform::host().files->isFolder(other->source)) {
                throw SenselessProject(quoted(item.source) + " cannot go to " + quoted("/" + item.place) + ", since " +
                                       quoted(other->source) + ", which goes to " + quoted("/" + other->place) +
                                       ", is no folder");
            }
            checkRoom(other->source, item.place.substr(slash + 1), item, quoted(other->source));
        }
    }
}

}  // namespace

std::vector<PlacedItem> placeItems(const Project& project) {
    std::vector<PlacedItem> items;
    for (const ProjectItem& item : project.items) {
        items.push_back(placed(item));
        if (project.tree) {
            checkRoom(*project.tree, items.back().place, items.back(), "the tree");
        }
    }
    std::ranges::stable_sort(items, {}, &PlacedItem::place);
    const auto twice = std::ranges::adjacent_find(items, {}, &PlacedItem::place);
    if (twice != items.end()) {
        throw SenselessProject("“" + twice->source + "” and “" + std::next(twice)->source + "” both go to “/" +
                               twice->place + "”; leave out one of the two");
    }
    checkRoomInOthers(items);
    return items;
}

}  // namespace wickfield_bundle
