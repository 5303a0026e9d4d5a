// A project as the words of a command line describe it.
#pragma once

#include <span>

#include "tools/commandline/Arguments.h"
#include "tools/wickfield-bundle/project/Project.h"

namespace wickfield_bundle {

// The project file of a maker's repository.
inline constexpr const char* usualProjectFile = "wickfield.json";

// Those that describe a project, for a command to have among its own.
std::span<const commandline::Option> projectOptions();

// What the options say; what they leave open is said by the project file: the one that --project names or, where no
// option names anything to install, the usual one in the working folder if there is one. Items of both are installed.
// Blocks. Throws UsageError, and ProjectProblems for the file.
Project projectByOptions(const commandline::Arguments& arguments);

// "SOURCE=DESTINATION", cut at the last "=" before a "/". Throws UsageError.
ProjectItem itemOfOption(const std::string& text);

}  // namespace wickfield_bundle
