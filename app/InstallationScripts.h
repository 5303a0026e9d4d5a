// The scripts that an installer can carry.
#pragma once

#include <optional>
#include <span>
#include <string>

namespace InstallationScripts {

inline constexpr const char* before = "preinstall";
inline constexpr const char* after = "postinstall";

struct Interpreter {
    const char* extension;
    const char* tool;  // absolute path
};

// In the order in which the extensions are tried: a script of an earlier one hides those of later ones.
std::span<const Interpreter> interpreters();

struct Script {
    std::string path;
    const char* interpreter;
};

// Any thread. The script of that name that is run; none when the resources have none.
std::optional<Script> find(const std::string& resourcePath, const std::string& name);

}  // namespace InstallationScripts
