// The rules that a bundle is checked by: each a function of what was found in it, all run by checkBundle.
#pragma once

#include <string>

#include "tools/wickfield-bundle/check/Finding.h"
#include "tools/wickfield-bundle/check/Inventory.h"

namespace wickfield_bundle {

// What a rule may look at.
struct CheckedBundle {
    std::string path;             // of the bundle
    Inventory contents;           // of the whole bundle; paths begin with "Contents/"
    std::string treePrefix;       // "Contents/Resources/PluginStructure/"
    std::string resourcesPrefix;  // "Contents/Resources/"

    std::string fullPath(const std::string& place) const { return place.empty() ? path : path + "/" + place; }
};

// Each adds its findings to the end. None throws for anything that a bundle can hold.
void checkSettings(const CheckedBundle& bundle, Findings& findings);  // settings, agreement, background
void checkScripts(const CheckedBundle& bundle, Findings& findings);
void checkTree(const CheckedBundle& bundle, Findings& findings);  // top, skipped, placeholders, kinds of file
void checkLinks(const CheckedBundle& bundle, Findings& findings);
void checkNames(const CheckedBundle& bundle, Findings& findings);         // collisions, lengths
void checkPackages(const CheckedBundle& bundle, Findings& findings);      // plug-in bundles
void checkPrograms(const CheckedBundle& bundle, Findings& findings);      // Mach-O
void checkDestinations(const CheckedBundle& bundle, Findings& findings);  // guards
void checkSizes(const CheckedBundle& bundle, Findings& findings);
void checkQuarantine(const CheckedBundle& bundle, Findings& findings);
void checkLayout(const CheckedBundle& bundle, Findings& findings);  // what an installer's own parts have to be

// All of them, by severity, then place, then rule. A path that is no bundle at all gives one error.
Findings checkBundle(const std::string& path);

}  // namespace wickfield_bundle
