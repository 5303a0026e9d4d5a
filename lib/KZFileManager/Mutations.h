#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

enum class ShouldAuth { no, yes };
enum class SetCreationDate { no, yes };
enum class IncludeParent { no, yes };

namespace KZFileManager {

using Path = std::optional<std::string>;  // none: no path at all

bool trashFile(const std::string& path);
bool trashFile(const std::string& path, ShouldAuth shouldAuth);
bool trashFile(const std::string& path, std::chrono::seconds timeout);

bool removeFile(const std::string& path);
bool removeFile(const std::string& path, ShouldAuth shouldAuth);
bool removeFile(const std::string& path, std::chrono::seconds timeout);

bool createDirectory(const std::string& path);
bool createDirectory(const std::string& path, ShouldAuth shouldAuth);
bool createDirectory(const std::string& path, std::chrono::seconds timeout);

bool copyFile(const Path& source, const Path& toPath);
bool copyFile(const Path& source, const Path& toPath, ShouldAuth shouldAuth);
bool copyFile(const Path& source, const Path& toPath, std::chrono::seconds timeout);

bool moveFile(const std::string& source, const std::string& toPath);
bool moveFile(const std::string& source, const std::string& toPath, ShouldAuth shouldAuth);
bool moveFile(const std::string& source, const std::string& toPath, std::chrono::seconds timeout);

bool trashDirectoryContents(const std::string& folder);
bool trashDirectoryContents(const std::string& folder, ShouldAuth shouldAuth);
bool copyContentsOfDirectory(const std::string& folder, const std::string& toPath, std::chrono::seconds timeout);
std::vector<std::string> trashFilesOfType(const std::string& extension, const std::string& inFolder);
std::vector<std::string> trashFilesNamed(const std::string& name, const std::string& inFolder);
bool isFolderEmpty(const std::string& folder);
bool removeFolderIfEmpty(const std::string& folder);
std::string createDirectoryStructure(const std::string& path, const std::string& destination);

bool compressFile(const std::string& source, const std::string& toDestinationFile);
bool compressFile(const std::string& source, const std::string& toDestinationFile, IncludeParent includeParent);
bool decompressFile(const std::string& archive, const std::string& toDestinationFolder);

bool touchFile(const Path& path);
bool touchFile(const Path& path, SetCreationDate setCreationDate);

}  // namespace KZFileManager
