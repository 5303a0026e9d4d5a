#pragma once

#include <optional>
#include <string>

#include "platform/ports/StandardFolders.h"

enum class UserDomain { no, yes };  // no: the machine-wide folder below "/Library"
enum class ExactMatch { no, yes };

namespace KZLocalPaths {

std::optional<std::string> pathForDirectory(platform::FolderKind kind, platform::FolderDomain domain);

std::optional<std::string> applicationDirectory(UserDomain user);
std::optional<std::string> adminApplicationDirectory(UserDomain user);
std::optional<std::string> documentDirectory(UserDomain user);
std::optional<std::string> libraryDirectory(UserDomain user);
std::optional<std::string> prefsDirectory(UserDomain user);
std::optional<std::string> cacheDirectory(UserDomain user);
std::optional<std::string> appSupportDirectory(UserDomain user);
std::optional<std::string> movieDirectory();
std::optional<std::string> desktopDirectory();
std::optional<std::string> systemLibraryDirectory();
std::optional<std::string> localDocumentationDirectory();
std::optional<std::string> darwinCacheDirectory();
std::optional<std::string> userDirectory();
std::optional<std::string> username();
std::optional<std::string> currentConsoleUser();
std::optional<std::string> trashDirectory();
std::optional<std::string> logDirectory(UserDomain user);
std::string tempDirectory();
std::string tempFile();
std::string uuid();

bool isPathSystemDirectory(const std::string& path);
bool isPathSystemDirectory(const std::string& path, ExactMatch exactMatch);
bool isPathOnTimeMachineVolume(const std::string& path);
std::optional<std::string> ensureTrailingSlash(const std::optional<std::string>& path);
std::optional<std::string> stripTrailingSlash(const std::optional<std::string>& path);
std::string randomString(long length);

}  // namespace KZLocalPaths
