// Changes to one item: trash, remove, create a folder, copy, move and touch.
//
// The first five come in three forms. The plain form is the one with ShouldAuth::yes. The form with the switch tries
// with the rights of the process; when that fails it logs why (trashing does not) and, only if allowed, has the shared
// administrator-rights session repeat the operation, which may put a password dialog on the screen and block until it
// is answered; "Authorizing..." in the log does not mean that it was allowed. The session answers once its tool has
// been started, so with its help true means started, not done.
//
// The form with a time-out is the plain form, then a wait until the effect can be seen on disk: true means seen, false
// that the operation failed (at once) or that the time was up, with whatever was done left in place. The time-out is in
// whole seconds and counts from the end of the operation; 0 and less look once and do not wait. Seen means by a test
// that follows links: a dangling link counts as absent. The wait looks again every 0.3 seconds; on the main thread it
// runs the event loop in slices of 0.01 seconds instead, so a caller there must expect its own event handlers to be
// called before the operation returns.
#pragma once

#include <chrono>
#include <optional>
#include <string>

enum class ShouldAuth { no, yes };
enum class SetCreationDate { no, yes };

namespace KZFileManager {

using Path = std::optional<std::string>;  // none: no path at all

// Moves the item to the user's Trash, with all that lies in it, after clearing its locked flag; what lies in the Trash
// already is never replaced. True for an item that does not exist. Without a Trash (the superuser when nobody owns the
// console) the item stays where it is.
bool trashFile(const std::string& path);
bool trashFile(const std::string& path, ShouldAuth shouldAuth);
bool trashFile(const std::string& path, std::chrono::seconds timeout);

// Deletes the item for good, with all that lies in it, after clearing its own locked flag; links are deleted, never
// followed. Not atomic: a failure may leave a part of a folder. True for an item that does not exist.
bool removeFile(const std::string& path);
bool removeFile(const std::string& path, ShouldAuth shouldAuth);
bool removeFile(const std::string& path, std::chrono::seconds timeout);

// Makes the folder and the missing ones above it; true when it is there already. A path on a volume that is not mounted
// is refused, with a line on the system console and without asking for rights.
bool createDirectory(const std::string& path);
bool createDirectory(const std::string& path, ShouldAuth shouldAuth);
bool createDirectory(const std::string& path, std::chrono::seconds timeout);

// Copies the item with its attributes, a folder with all that lies in it, links as links, after clearing the locked
// flag of the folder that is to hold the copy. Replaces nothing: anything at the destination, a dangling link included,
// makes the plain attempt fail; the administrator's attempt does overwrite, and copies into a folder that stands there.
// The name appears only once the copy is complete (by the plain attempt). A path that is none is logged and refused.
bool copyFile(const Path& source, const Path& toPath);
bool copyFile(const Path& source, const Path& toPath, ShouldAuth shouldAuth);
bool copyFile(const Path& source, const Path& toPath, std::chrono::seconds timeout);

// Moves the item, after clearing the locked flag of what stands at the destination. Replaces nothing, as with copyFile;
// the administrator's attempt does. A rename that changes only letter case goes through a free name beside the
// destination; should the second of its two steps fail, the item stays under that name. The form with a time-out then
// waits for nothing and is true whenever the plain form was.
bool moveFile(const std::string& source, const std::string& toPath);
bool moveFile(const std::string& source, const std::string& toPath, ShouldAuth shouldAuth);
bool moveFile(const std::string& source, const std::string& toPath, std::chrono::seconds timeout);

// Sets the item's modification date to now, and its creation date when that is asked for (as far as the host can);
// never creates anything. An item that is writable is always true, whatever came of it. One that is not, or is missing,
// is handed to the administrator-rights session: true when its tool could be started. Waits until the tool has ended,
// however long that takes: the time-out of such a run ends nothing (see KZTaskEx::runTask). In every case but a missing
// path (false) the desktop is told of the change, also when an exception passes, which the caller receives unchanged.
bool touchFile(const Path& path);
bool touchFile(const Path& path, SetCreationDate setCreationDate);

}  // namespace KZFileManager
