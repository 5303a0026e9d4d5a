#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/ports/Date.h"
#include "platform/ports/PropertyValue.h"

struct FSRef {
    std::array<unsigned char, 80> hidden{};
};

std::int32_t SendFinderSyncEvent(const FSRef* ref);

namespace KZFileManager {

void notifyFileSystemChanged(const std::optional<std::string>& path);
FSRef stringToFSRef(const std::string& path);
std::optional<std::string> stringWithFSRef(const FSRef* ref);

bool fileExistsAtPath(const std::string& path);
bool isDirectoryAtPath(const std::string& path);
bool isPackageAtPath(const std::string& path);
bool isSymbolicLinkAtPath(const std::string& path);
bool isVolumeMountedForPath(const std::string& path);
bool isDriveMountedForPath(const std::string& path);
std::optional<std::string> volumeMountPointForPath(const std::string& path);
std::optional<platform::Date> modificationDateForFile(const std::string& path);
std::optional<platform::Date> creationDateForFile(const std::string& path);
std::uint64_t fileSize(const std::string& path);
std::optional<platform::PropertyDictionary> infoForDiskAtMountpoint(const std::string& mountPoint);
bool createEmptyFile(const std::string& path);
std::string formatFileSize(double bytes);
bool isFileLocked(const std::string& path);
void lockFile(const std::string& path);
void unlockFile(const std::string& path);
void lockFolder(const std::string& folder);
void unlockFolder(const std::string& folder);
void setPosixPermissions(unsigned long permissions, const std::string& path);

}  // namespace KZFileManager
