#include "tools/wickfield-bundle/project/ProjectOptions.h"

#include <array>

#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/project/ProjectFile.h"

namespace wickfield_bundle {

namespace {

using commandline::Arguments;
using commandline::Option;
using commandline::UsageError;

constexpr std::array<Option, 12> options{{
    {'p', "project", "FILE", "the project file; else wickfield.json here, unless --tree or --item is given"},
    {0, "name", "TEXT", "the plug-in's name"},
    {0, "version", "TEXT", "the plug-in's version"},
    {0, "author", "TEXT", "the plug-in's author"},
    {0, "identifier", "TEXT", "the bundle's identifier; else made of author and name"},
    {0, "agreement", "FILE", "what the user has to agree to: .rtf, .rtfd, .html or .txt"},
    {0, "background", "FILE", "the window's background image"},
    {0, "preinstall", "FILE", "a script to be run before the files are installed: .sh, .swift or .scpt"},
    {0, "postinstall", "FILE", "a script to be run after them"},
    {0, "no-branding", nullptr, "leave out the line about who made the installer"},
    {'t', "tree", "FOLDER", "files to install: a folder that mirrors the disk from its root"},
    {'i', "item", "SOURCE=DESTINATION", "a file or folder to install at that place; may be repeated"},
}};

void take(const Arguments& arguments, const char* word, std::string& text) {
    if (const auto value = arguments.value(word)) {
        text = *value;
    }
}

void takePath(const Arguments& arguments, const char* word, std::optional<std::string>& path) {
    const auto value = arguments.value(word);
    if (!value) {
        return;
    }
    if (value->empty()) {
        throw UsageError(std::string("the option --") + word + " needs a path");
    }
    path = *value;
}

Project projectOfFile(const Arguments& arguments) {
    if (const auto file = arguments.value("project")) {
        return readProjectFile(*file);
    }
    const bool isContentGiven = arguments.has("tree") || arguments.has("item");
    if (!isContentGiven && platform::host().files->attributes(usualProjectFile)) {
        return readProjectFile(usualProjectFile);
    }
    return {};
}

}  // namespace

std::span<const Option> projectOptions() { return options; }

ProjectItem itemOfOption(const std::string& text) {
    const auto equals = text.rfind("=/");
    if (equals == std::string::npos || equals == 0) {
        throw UsageError("--item " + text +
                         " is no SOURCE=DESTINATION; a destination begins with “/”, and “/Users/user/” stands for the "
                         "home folder of whoever installs");
    }
    return {text.substr(0, equals), text.substr(equals + 1)};
}

Project projectByOptions(const Arguments& arguments) {
    Project project = projectOfFile(arguments);
    take(arguments, "name", project.name);
    take(arguments, "version", project.version);
    take(arguments, "author", project.author);
    take(arguments, "identifier", project.identifier);
    takePath(arguments, "agreement", project.agreement);
    takePath(arguments, "background", project.background);
    takePath(arguments, "preinstall", project.preinstall);
    takePath(arguments, "postinstall", project.postinstall);
    takePath(arguments, "tree", project.tree);
    project.removesBranding = project.removesBranding || arguments.has("no-branding");
    for (const std::string& text : arguments.values("item")) {
        project.items.push_back(itemOfOption(text));
    }
    return project;
}

}  // namespace wickfield_bundle
