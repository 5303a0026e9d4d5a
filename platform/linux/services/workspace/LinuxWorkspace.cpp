#include "platform/linux/services/workspace/LinuxWorkspace.h"

#include <algorithm>
#include <cstdlib>

#include "platform/linux/services/workspace/ApplicationEntry.h"
#include "platform/linux/services/workspace/DesktopEntries.h"
#include "platform/linux/services/workspace/DetachedProcess.h"
#include "platform/linux/services/workspace/Mounts.h"
#include "platform/linux/services/workspace/Packages.h"
#include "platform/linux/services/workspace/Trash.h"
#include "platform/posix/PathParts.h"

namespace platform::linux_host {

namespace {

// A relative path in these variables is to be ignored.
std::string absoluteVariable(const char* name, const std::string& otherwise) {
    const char* value = std::getenv(name);
    return value != nullptr && value[0] == '/' ? value : otherwise;
}

// The bundle that a program lies in, else the program itself.
std::string applicationOf(const std::string& program) {
    const auto bundle = program.rfind(".app/Contents/");
    return bundle == std::string::npos ? program : program.substr(0, bundle + 4);
}

}  // namespace

LinuxWorkspace::LinuxWorkspace(Identity& identity) : m_identity(identity) {}

bool LinuxWorkspace::isFilePackage(const std::string& path) { return isPackage(path); }

Failure LinuxWorkspace::recycle(const std::string& folder, const std::string& name, const std::string& trashFolder) {
    const std::string home = posix::splitPath(trashFolder).folder;
    const std::string usual = posix::joinPath(home, ".local/share");
    const bool isOwnHome = home == posix::withoutTrailingSlashes(m_identity.homeFolder());
    return recycleItem(
        folder, name,
        {posix::withoutTrailingSlashes(trashFolder), isOwnHome ? absoluteVariable("XDG_DATA_HOME", usual) : usual});
}

std::vector<std::string> LinuxWorkspace::mountedLocalVolumePaths() { return localMountPoints(); }

void LinuxWorkspace::noteFileSystemChanged(const std::string& /*path*/) { ++m_droppedHints; }

int LinuxWorkspace::sendFinderUpdate(const std::optional<std::string>& /*path*/) {
    ++m_droppedHints;
    return 0;
}

bool LinuxWorkspace::openURL(const std::string& url) {
    const bool looksLikeOption = url.starts_with('-');
    return !url.empty() && !looksLikeOption && startDetached({"xdg-open", url});
}

std::optional<std::string> LinuxWorkspace::applicationWithIdentifier(const std::string& identifier) {
    const auto entry = findDesktopEntry(identifier, dataFolders());
    const auto command = entry ? commandLine(*entry, {}) : std::vector<std::string>{};
    const auto program = command.empty() ? std::nullopt : findProgram(command.front());
    return program ? std::optional(applicationOf(*program)) : std::nullopt;
}

bool LinuxWorkspace::openURLs(const std::vector<std::string>& urls, const std::string& identifier) {
    const auto entry = findDesktopEntry(identifier, dataFolders());
    return entry && startDetached(commandLine(*entry, urls));
}

Failure LinuxWorkspace::registerApplication(const std::string& bundlePath) {
    return writeApplicationEntry(bundlePath, dataFolders().front());
}

std::vector<std::string> LinuxWorkspace::dataFolders() {
    std::vector<std::string> folders{
        absoluteVariable("XDG_DATA_HOME", posix::joinPath(m_identity.homeFolder(), ".local/share"))};
    const char* variable = std::getenv("XDG_DATA_DIRS");
    std::string_view others = variable != nullptr && *variable != '\0' ? variable : "/usr/local/share:/usr/share";
    while (!others.empty()) {
        const auto end = std::min(others.find(':'), others.size());
        if (others.front() == '/') {
            folders.emplace_back(others.substr(0, end));
        }
        others.remove_prefix(std::min(end + 1, others.size()));
    }
    return folders;
}

}  // namespace platform::linux_host
