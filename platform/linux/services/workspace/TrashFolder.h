// One folder that trashed items go into.
#pragma once

#include <ctime>
#include <optional>
#include <string>

#include "platform/linux/services/files/ItemPlace.h"
#include "platform/linux/services/files/Ownership.h"
#include "platform/ports/Error.h"
#include "platform/posix/Descriptor.h"

namespace platform::linux_host {

// A Trash of the freedesktop.org kind, in which each item has a note of where it came from, or a plain folder that is
// used as a Trash. Both are held open: whatever becomes of the ways that led to them, nothing goes anywhere else.
struct TrashFolder {
    posix::Descriptor items;
    posix::Descriptor notes;    // none for a plain folder
    std::string path;           // of the items, to tell people
    std::string topFolder;      // what the notes' paths are relative to; empty: they are absolute
    std::optional<Owner> user;  // whom the superuser acts for
};

// Makes files/ and info/ in the open folder, private to the user, as far as they are missing. None when that is not
// possible, or when what stands there is a link or belongs to somebody else.
std::optional<TrashFolder> makeTrash(int trash, const std::string& path, const std::optional<Owner>& user);

// The folder of that name, made for its user alone and with his rights when it is missing. None when it cannot be made,
// belongs to somebody else or is a link.
posix::Descriptor privateFolder(int parent, const std::string& name, const std::optional<Owner>& user);

// Whether the open folder belongs to the user, or to the process's own without one.
bool belongsTo(int folder, const std::optional<Owner>& user);

// Moves the item there under the first free name, never replacing anything; across file systems by copying. The
// superuser's folders in it are given to the user. On a failure the item is where it was and no note stays.
Failure moveIntoTrash(const ItemPlace& item, const TrashFolder& trash);

// The name to try: the item's own, then with ".2", ".3", ... before the extension, later with a random number there;
// cut between two characters so that the name of its note still fits.
std::string trashName(const std::string& name, int attempt);

// The text of a note. The date is local time; in the path everything but letters, digits and "-._~/" is
// percent-encoded.
std::string trashNote(const std::string& originalPath, std::time_t when);

}  // namespace platform::linux_host
