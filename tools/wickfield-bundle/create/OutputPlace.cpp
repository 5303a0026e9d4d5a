#include "tools/wickfield-bundle/create/OutputPlace.h"

#include <optional>

#include "lib/base/PathText.h"
#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/create/CreateFailure.h"

namespace wickfield_bundle {

namespace {

platform::FileManager& files() { return *platform::host().files; }

// The folder itself or the nearest above it that is there; "." or "/" at the farthest, even one that cannot be looked
// into.
std::string nearestExisting(std::string folder) {
    while (!files().fileExists(folder) && folder != "." && folder != "/") {
        const std::string above = kz::deletingLastPathComponent(folder);
        folder = above.empty() ? "." : above;
    }
    return folder;
}

// The folder that really holds the item, whatever links led to it.
std::string holding(const std::string& path) {
    if (files().isFolder(path)) {
        return path + "/..";
    }
    const std::string above = kz::deletingLastPathComponent(path);
    return above.empty() ? "." : above;
}

// Whether the item that the path leads to is the folder or lies in it.
bool liesIn(const std::string& path, const platform::FileIdentity& folder) {
    std::string at = path;
    auto present = files().identity(at);
    while (present) {
        if (*present == folder) {
            return true;
        }
        at = holding(at);
        const auto above = files().identity(at);
        if (above == present) {
            return false;  // the root
        }
        present = above;
    }
    return false;
}

void checkReplaceableBundle(const std::string& path) {
    const auto attributes = files().attributes(path);
    const bool isBundle = attributes && attributes->type == platform::FileType::folder &&
                          files().fileExists(kz::appendPathComponent(path, "Contents/Info.plist"));
    if (!isBundle) {
        throw CreateFailure("“" + path + "” is there, and is no bundle that could be replaced; remove it yourself");
    }
}

void checkFree(const std::string& path, Replace replace) {
    if (files().attributes(path) && replace == Replace::no) {
        throw CreateFailure("“" + path + "” is there already; --force replaces it");
    }
}

}  // namespace

void prepareOutput(const OutputPlace& place, Replace replace, const std::vector<std::string>& sources) {
    const std::string folder = nearestExisting(place.folder);
    for (const std::string& source : sources) {
        const auto identity = files().identity(source);
        if (identity && files().isFolder(source) && liesIn(folder, *identity)) {
            throw CreateFailure("“" + place.folder + "” lies in “" + source +
                                "”, which is to go into the bundle; choose another folder by --output");
        }
    }
    checkFree(place.bundle, replace);
    if (files().attributes(place.bundle)) {
        checkReplaceableBundle(place.bundle);
        const auto bundle = files().identity(place.bundle);
        for (const std::string& source : sources) {
            if (bundle && liesIn(source, *bundle)) {
                throw CreateFailure("“" + source + "” lies in the bundle that is to be replaced, “" + place.bundle +
                                    "”");
            }
        }
    }
    if (place.archive) {
        checkFree(*place.archive, replace);
        if (files().isFolder(*place.archive)) {
            throw CreateFailure("“" + *place.archive + "” is a folder; remove it yourself");
        }
    }
    if (const auto failure = files().createDirectory(place.folder, platform::Intermediates::yes)) {
        throw CreateFailure(*failure);
    }
}

}  // namespace wickfield_bundle
