// What is known about an item, and the few attributes that can be set. Nothing here is reported by an exception: what
// cannot be read answers false, 0 or none, what cannot be set is logged.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "lib/KZFileManager/FileReference.h"
#include "platform/ports/Date.h"
#include "platform/ports/PropertyValue.h"

namespace KZFileManager {

// These two follow a final symbolic link: a dangling link does not exist, a link to a folder is a folder.
bool fileExistsAtPath(const std::string& path);
bool isDirectoryAtPath(const std::string& path);

// A folder that people see as one item, such as an application or a plug-in bundle.
bool isPackageAtPath(const std::string& path);

// A dangling link is a link too.
bool isSymbolicLinkAtPath(const std::string& path);

// Whether the volume that the path names is there. A path outside "/Volumes" is on the start-up volume, which always
// is. The two differ in one point, which is meant: the first takes any path that begins with the text "/Volumes" for
// one of a volume, "/VolumesX/a/b" included, the second only one that begins with "/Volumes/".
bool isVolumeMountedForPath(const std::string& path);
bool isDriveMountedForPath(const std::string& path);

// The mount point of a local volume that is the path or an ancestor of it, the first that the host lists; "/" for the
// start-up volume; none when the path begins with "/Volumes" and its volume is not mounted.
std::optional<std::string> volumeMountPointForPath(const std::string& path);

// Of the item itself, a link not followed; none when it cannot be looked at or the host does not know the date.
std::optional<platform::Date> modificationDateForFile(const std::string& path);
std::optional<platform::Date> creationDateForFile(const std::string& path);

// Bytes of a file, or of all that lies in a folder at any depth. Links to folders are followed, so what is reached
// twice counts twice; a link to a file or to nothing counts its own few bytes; a folder that lies within itself through
// a link counts nothing there. 0 for a missing item, an empty folder and an unreadable one.
std::uint64_t fileSize(const std::string& path);

// What the host's disk tool says about the volume. Waits for the tool, at most 5 seconds. None when the tool says
// nothing or something else than a dictionary; what cannot be parsed is reported on the system console.
std::optional<platform::PropertyDictionary> infoForDiskAtMountpoint(const std::string& mountPoint);

// Makes the file under a temporary name and moves it to the path, with the move's fall-back to administrator rights.
// False when anything stands at the path; its contents are kept.
bool createEmptyFile(const std::string& path);

// As people read it, in steps of 1024: "1023 B", "1.00 KB", up to "TB".
std::string formatFileSize(double bytes);

// The locked flag of the item itself. A failure to set or to clear it is logged, as "Unable to unlock file ..." in both
// cases, without waiting for the log.
bool isFileLocked(const std::string& path);
void lockFile(const std::string& path);
void unlockFile(const std::string& path);

// Every file below the folder, at any depth, links to folders followed; the folders themselves stay as they are. An
// unreadable folder is passed over.
void lockFolder(const std::string& folder);
void unlockFolder(const std::string& folder);

// The nine permission bits, set-id and sticky bits. A failure is logged.
void setPosixPermissions(unsigned long permissions, const std::string& path);

}  // namespace KZFileManager
