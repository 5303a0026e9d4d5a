#include "app/InstallationScripts.h"

#include <array>

#include "platform/ports/Host.h"

namespace InstallationScripts {

namespace {

constexpr std::array<Interpreter, 3> all{
    {{"scpt", "/usr/bin/osascript"}, {"swift", "/usr/bin/swift"}, {"sh", "/bin/bash"}}};

}  // namespace

std::span<const Interpreter> interpreters() { return all; }

std::optional<Script> find(const std::string& resourcePath, const std::string& name) {
    for (const auto& interpreter : all) {
        auto path = resourcePath + "/" + name + "." + interpreter.extension;
        if (platform::host().files->fileExists(path)) {
            return Script{std::move(path), interpreter.tool};
        }
    }
    return std::nullopt;
}

}  // namespace InstallationScripts
