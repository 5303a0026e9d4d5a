// The project file in a maker's repository: JSON, with comments.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tools/wickfield-bundle/project/Project.h"

namespace wickfield_bundle {

// What is wrong with a project file, one line each: the file, the line where there is one, the key, what is wrong and
// what is wanted instead. Everything, unless it is so much that nobody would read it.
class ProjectProblems : public std::runtime_error {
public:
    explicit ProjectProblems(std::vector<std::string> lines)
        : std::runtime_error(lines.front()), m_lines(std::move(lines)) {}
    const std::vector<std::string>& lines() const { return m_lines; }

private:
    std::vector<std::string> m_lines;
};

// Blocks. Nothing is opened but a plain file of at most 1 MiB. Paths in it are taken from the folder that holds it.
// Throws ProjectProblems for a file that is not in order as a whole: there is no half of a project.
Project readProjectFile(const std::string& path);

// The same for contents that are at hand; `path` is what people are told, and its folder what paths are taken from.
Project parseProject(std::string_view contents, const std::string& path);

// The keys of a project file, and those of each of its items. "$schema" may stand beside them.
std::span<const std::string_view> projectKeys();
std::span<const std::string_view> itemKeys();

}  // namespace wickfield_bundle
