// Changes to all that lies in a folder, and archives.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "lib/KZFileManager/Mutations.h"

enum class IncludeParent { no, yes };

namespace KZFileManager {

// Trashes every entry of the folder, hidden ones included, and goes on after a failure; the folder itself stays. True
// when every entry went, and for an empty or unreadable folder.
bool trashDirectoryContents(const std::string& folder);
bool trashDirectoryContents(const std::string& folder, ShouldAuth shouldAuth);

// Copies every entry into the folder `toPath`, which must be there, each with the time-out of copyFile. Stops at the
// first failure: what was copied stays, the rest is not tried.
bool copyContentsOfDirectory(const std::string& folder, const std::string& toPath, std::chrono::seconds timeout);

// Trash the files below the folder, at any depth, whose extension is that one (in any letter case) or whose name is
// exactly that one. Folders, packages and links to folders among them, are walked into and never matched themselves.
// The paths that matched, whether or not they could be trashed.
std::vector<std::string> trashFilesOfType(const std::string& extension, const std::string& inFolder);
std::vector<std::string> trashFilesNamed(const std::string& name, const std::string& inFolder);

// Whether nothing lies in the folder but ".DS_Store", "Icon\r" and folders of which the same is true; links to folders
// are followed. A missing or unreadable folder counts as empty, so check first when that matters.
bool isFolderEmpty(const std::string& folder);

// Removes the folder, for good, when it is empty in that sense; false when it is not.
bool removeFolderIfEmpty(const std::string& folder);

// Makes, below the folder `destination`, the path of a folder, or of the folder that holds the path when that is a file
// or a package. The path made, whether or not the folder is there now.
std::string createDirectoryStructure(const std::string& path, const std::string& destination);

// Make a zip archive of a file or folder, in place of what stands at the archive's path, which is trashed first. With
// the parent (as in the short form) the archive holds the folder itself, without it the folder's contents. Wait for the
// tool without a limit. True when something stands at the archive's path afterwards.
bool compressFile(const std::string& source, const std::string& toDestinationFile);
bool compressFile(const std::string& source, const std::string& toDestinationFile, IncludeParent includeParent);

// Unpacks a zip archive into a folder of that path, in place of what stands there, which is trashed first with the
// rights of the process. Waits for the tool without a limit. True when something stands at the folder's path
// afterwards.
bool decompressFile(const std::string& archive, const std::string& toDestinationFolder);

}  // namespace KZFileManager
