#include "tools/wickfield-bundle/create/BundleFolder.h"

#include <fcntl.h>

#include <array>
#include <cerrno>
#include <utility>

#include "platform/linux/tools/archive/FileBytes.h"
#include "platform/linux/tools/archive/ToolFailure.h"
#include "platform/posix/PathParts.h"
#include "tools/wickfield-bundle/create/CreateFailure.h"
#include "tools/wickfield-bundle/create/SourceWalk.h"

namespace wickfield_bundle {

namespace linux_host = platform::linux_host;
namespace posix = platform::posix;
using platform::posix::Descriptor;

namespace {

constexpr mode_t modeOfFolders = 0755;
constexpr mode_t modeOfFiles = 0644;
constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

int resultOf(int result) { return result == 0 ? 0 : errno; }

void setTime(int item, timespec time, const std::string& place) {
    const std::array<timespec, 2> both{time, time};
    throwWhenFailed(resultOf(::futimens(item, both.data())), "set the time of", place);
}

std::string folderOf(std::string_view place) {
    const auto slash = place.rfind('/');
    return std::string(slash == std::string_view::npos ? std::string_view() : place.substr(0, slash));
}

std::string nameOf(std::string_view place) { return std::string(place.substr(place.rfind('/') + 1)); }

}  // namespace

int BundleFolder::holding(std::string_view place) {
    m_open = open(folderOf(place));
    return m_open.get();
}

void BundleFolder::makeFolder(std::string_view place) { m_open = open(place); }

void BundleFolder::openToAll(std::string_view place) {
    makeFolder(place);
    m_folders[std::string(place)].status.st_mode |= modeOfFolders;
}

Descriptor BundleFolder::open(std::string_view folder) {
    Descriptor at(::openat(m_bundle, ".", folderFlags));
    throwWhenFailed(at ? 0 : errno, "open", "the bundle");
    std::string place;
    while (!folder.empty()) {
        const auto slash = folder.find('/');
        const std::string name(folder.substr(0, slash));
        folder.remove_prefix(slash == std::string_view::npos ? folder.size() : slash + 1);
        place = place.empty() ? name : posix::joinPath(place, name);
        at = enter(at.get(), name, place);
    }
    return at;
}

Descriptor BundleFolder::enter(int above, const std::string& name, const std::string& place) {
    State state;
    state.isOurs = ::mkdirat(above, name.c_str(), S_IRWXU) == 0;
    if (!state.isOurs && errno != EEXIST) {
        throwWhenFailed(errno, "make", place);
    }
    throwWhenFailed(resultOf(::fstatat(above, name.c_str(), &state.status, AT_SYMLINK_NOFOLLOW)), "read", place);
    if (!S_ISDIR(state.status.st_mode)) {
        throw CreateFailure("“" + place + "” is no folder, and something else was to lie in it");
    }
    const bool isFirst = m_folders.emplace(place, state).second;
    if (isFirst && (state.status.st_mode & S_IRWXU) != S_IRWXU) {
        throwWhenFailed(resultOf(::fchmodat(above, name.c_str(), (state.status.st_mode & 07777U) | S_IRWXU, 0)),
                        "open up", place);
    }
    Descriptor folder(::openat(above, name.c_str(), folderFlags));
    throwWhenFailed(folder ? 0 : errno, "open", place);
    return folder;
}

void BundleFolder::writeFile(std::string_view place, std::string_view contents) {
    const std::string path(place);
    const Descriptor file(::openat(holding(place), nameOf(place).c_str(),
                                   O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    throwWhenFailed(file ? 0 : errno, "write", path);
    try {
        linux_host::writeAll(file.get(), contents);
    } catch (const linux_host::ToolFailure&) {
        throwWhenFailed(errno != 0 ? errno : EIO, "write", path);
    }
    m_files.push_back(path);
}

void BundleFolder::finish(const FileTimes& times) {
    for (const std::string& place : m_files) {
        const Descriptor file(::openat(holding(place), nameOf(place).c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
        throwWhenFailed(file ? resultOf(::fchmod(file.get(), modeOfFiles)) : errno, "write", place);
        setTime(file.get(), times.newest(), place);
    }
    const auto folders = std::move(m_folders);
    m_folders.clear();
    for (auto at = folders.rbegin(); at != folders.rend(); ++at) {
        const auto& [place, state] = *at;
        const Descriptor folder = open(place);
        const mode_t mode = state.isOurs ? modeOfFolders : state.status.st_mode & 07777U;
        throwWhenFailed(resultOf(::fchmod(folder.get(), mode)), "make", place);
        setTime(folder.get(), state.isOurs ? times.newest() : state.status.st_mtim, place);
    }
    throwWhenFailed(resultOf(::fchmod(m_bundle, modeOfFolders)), "make", "the bundle");
    setTime(m_bundle, times.newest(), "the bundle");
}

}  // namespace wickfield_bundle
