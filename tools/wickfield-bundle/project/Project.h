// What a maker wants in an installer. Plain data; where it came from, a project file or a command line, no longer
// shows.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace wickfield_bundle {

// A file or folder of the maker's, and the place on the customer's disk that it is to have.
struct ProjectItem {
    std::string source;       // as the program can open it
    std::string destination;  // absolute; "/Users/user/…" stands for the customer's own folders
};

// Paths are as the program can open them: those of a project file are taken from the file's folder.
struct Project {
    std::string name;
    std::string version;
    std::string author;
    std::string identifier;  // of the bundle; empty: made of the author and the name
    std::optional<std::string> agreement;
    std::optional<std::string> background;
    std::optional<std::string> preinstall;  // scripts; the extension tells the interpreter
    std::optional<std::string> postinstall;
    bool removesBranding = false;
    std::optional<std::string> tree;  // a folder that mirrors the disk from its root
    std::vector<ProjectItem> items;   // besides the tree
};

}  // namespace wickfield_bundle
