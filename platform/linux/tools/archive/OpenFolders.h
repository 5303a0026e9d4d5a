// The folders of a tree that is being written, opened without following links.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/posix/Descriptor.h"

namespace platform::linux_host {

class OpenFolders {
public:
    explicit OpenFolders(int root) : m_root(root) {}  // not owned

    // The folder at the relative path, made with those above it where they are missing; the root for the empty one.
    // Stays open until the next call. Fast for a path near that of the call before. Throws ToolFailure.
    int open(std::string_view path);

private:
    struct Step {
        std::string name;
        posix::Descriptor folder;
    };
    int innermost() const { return m_steps.empty() ? m_root : m_steps.back().folder.get(); }
    void enter(std::string_view name, std::string_view path);

    int m_root;
    std::vector<Step> m_steps;
};

}  // namespace platform::linux_host
