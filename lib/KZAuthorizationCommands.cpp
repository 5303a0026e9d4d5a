#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <string_view>
#include <thread>

#include "lib/KZAuthorization.h"
#include "lib/KZLocalPaths.h"
#include "lib/KZTaskEx.h"
#include "lib/base/Format.h"
#include "lib/base/PathText.h"
#include "lib/base/ToolArgument.h"
#include "platform/ports/Host.h"

namespace {

constexpr std::int32_t notAuthorized = -1;
constexpr std::int32_t toolMissing = -2;

bool isSuperuser() { return platform::host().identity->realUserID() == 0; }

void report(std::string_view format, const std::string& path) {
    platform::host().console->log(kz::format(format, path));
}

// True, with the message, for a folder of the system.
bool isRefused(const std::string& path, std::string_view message) {
    const bool refused = KZLocalPaths::isPathSystemDirectory(path, ExactMatch::yes);
    if (refused) {
        report(message, path);
    }
    return refused;
}

// A NUL would end the argument early and make it name another item.
bool holdNul(const std::vector<std::string>& arguments) {
    return std::ranges::any_of(arguments,
                               [](const std::string& argument) { return argument.find('\0') != std::string::npos; });
}

std::string localTimestamp() {
    const std::time_t now = std::time(nullptr);
    const std::tm local = *std::localtime(&now);
    std::array<char, 32> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y%m%d%H%M%S", &local);
    return {text.data(), length};
}

std::vector<platform::DirectoryEntry> entriesOf(const std::string& folder) {
    return platform::host().files->contentsOfDirectory(folder).value_or(std::vector<platform::DirectoryEntry>{});
}

}  // namespace

std::int32_t KZAuthorization::authExecTask(const std::string& tool, const std::vector<std::string>& parameters) {
    return authExecTask(tool, parameters, Async::yes);
}

std::int32_t KZAuthorization::authExecTask(const std::string& tool, const std::vector<std::string>& parameters,
                                           Async async) {
    if (!platform::host().files->fileExists(tool)) {
        report("Unable to execute task: path %@ doesn't exist", tool);
        return toolMissing;
    }
    if (holdNul(parameters)) {
        return EINVAL;
    }
    if (isSuperuser()) {
        if (async == Async::yes) {
            KZTaskEx::runTaskAndReturn(tool, parameters);
        } else {
            KZTaskEx::runTask(tool, parameters);
        }
        return 0;
    }
    if (!isAuthorized()) {
        authStart();
    }
    auto* service = platform::host().authorization;
    if (!isAuthorized() || service == nullptr) {
        return notAuthorized;
    }
    return service->execute(*m_authRef, tool, parameters, async == Async::no);
}

bool KZAuthorization::startTool(const std::string& tool, const std::vector<std::string>& parameters) {
    if (isSuperuser() && !holdNul(parameters)) {
        KZTaskEx::runTaskAndReturn(tool, parameters);
        return true;
    }
    return authExecTask(tool, parameters) == 0;
}

bool KZAuthorization::authRemoveFile(const std::string& path) {
    return !isRefused(path, "Unable to delete path %@ because it is a system directory.") &&
           authExecTask("/bin/rm", {"-Rdf", kz::toolArgument(path)}) == 0;
}

std::optional<std::string> KZAuthorization::trashDestination(const std::string& path) const {
    std::optional<std::string> destination;
    const std::string name = kz::lastPathComponent(path);
    if (isSuperuser() && m_userDirectory) {
        destination = *m_userDirectory + kz::format("/.Trash/%@", name);
    } else if (const auto trash = KZLocalPaths::trashDirectory()) {
        destination = kz::appendPathComponent(*trash, name);
    }
    if (destination && platform::host().files->fileExists(*destination)) {
        destination =
            kz::deletingPathExtension(*destination) + kz::format("_%@.%@", localTimestamp(), kz::pathExtension(path));
    }
    return destination;
}

bool KZAuthorization::authTrashFile(const std::string& path) { return authTrashFile(path, DeleteOnRootAccount::no); }

bool KZAuthorization::authTrashFile(const std::string& path, DeleteOnRootAccount deleteOnRootAccount) {
    if (isRefused(path, "Unable to trash path %@ because it is a system directory.")) {
        return false;
    }
    const auto destination = trashDestination(path);
    if (deleteOnRootAccount == DeleteOnRootAccount::yes && !m_userDirectory && isSuperuser()) {
        return destination && authRemoveFile(*destination);
    }
    return authMoveFile(path, destination);
}

bool KZAuthorization::authTrashFolderContents(const std::string& folder) {
    return authTrashFolderContents(folder, DeleteOnRootAccount::no);
}

bool KZAuthorization::authTrashFolderContents(const std::string& folder, DeleteOnRootAccount deleteOnRootAccount) {
    if (isRefused(folder, "Unable to trash folder contents of path %@ because it is a system directory.")) {
        return false;
    }
    const bool deletes = !m_userDirectory && deleteOnRootAccount == DeleteOnRootAccount::yes && isSuperuser();
    bool all = true;
    for (const auto& entry : entriesOf(folder)) {
        const std::string path = kz::appendPathComponent(folder, entry.name);
        const bool done =
            deletes ? authExecTask("/bin/rm", {"-R", "-f", kz::toolArgument(path)}) == 0 : authTrashFile(path);
        all = done && all;
    }
    return all;
}

bool KZAuthorization::authMoveFolderContents(const std::string& folder, const std::string& toPath) {
    if (isRefused(folder, "Unable to move contents of path %@ because it is a system directory.")) {
        return false;
    }
    bool all = true;
    for (const auto& entry : entriesOf(folder)) {
        all = authMoveFile(kz::appendPathComponent(folder, entry.name), kz::appendPathComponent(toPath, entry.name)) &&
              all;
    }
    return all;
}

bool KZAuthorization::authMoveFile(const std::optional<std::string>& source, const std::optional<std::string>& toPath) {
    if (!source || !toPath) {
        platform::host().console->log(!source ? "Error in authMoveFile: old path is null"
                                              : "Error in authMoveFile: new path is null");
        return false;
    }
    if (isRefused(*source, "Unable to move path %@ because it is a system directory.") ||
        !platform::host().files->fileExists(*source)) {
        return false;
    }
    return startTool("/bin/mv", {"-f", kz::toolArgument(*source), kz::toolArgument(*toPath)});
}

bool KZAuthorization::authCopyFile(const std::optional<std::string>& source, const std::optional<std::string>& toPath) {
    if (!source || !toPath) {
        platform::host().console->log(!source ? "Error in authCopyFile: old path is null"
                                              : "Error in authCopyFile: new path is null");
        return false;
    }
    return platform::host().files->fileExists(*source) &&
           startTool("/bin/cp", {"-f", "-p", "-R", kz::toolArgument(*source), kz::toolArgument(*toPath)});
}

bool KZAuthorization::authCreateDir(const std::string& path) {
    const bool started = startTool("/bin/mkdir", {"-p", kz::toolArgument(path)});
    if (started && !isSuperuser()) {
        std::this_thread::sleep_for(std::chrono::microseconds{500});
    }
    return started;
}
