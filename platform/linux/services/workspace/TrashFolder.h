// One folder that trashed items go into.
#pragma once

#include <ctime>
#include <optional>
#include <string>

#include "platform/linux/services/files/Ownership.h"
#include "platform/ports/Error.h"

namespace platform::linux_host {

// A Trash of the freedesktop.org kind, in which each item has a note of where it came from, or a plain folder that is
// used as a Trash.
struct TrashFolder {
    std::string items;
    std::optional<std::string> notes;  // none for a plain folder
    std::string topFolder;             // what the notes' paths are relative to; empty: they are absolute
    std::optional<Owner> owner;        // whom what goes into it is given to; none: it stays as it is
};

// Makes files/ and info/ below `trash`, private to the owner, as far as they are missing. None when that is not
// possible, or when what stands there is a link or belongs to somebody else.
std::optional<TrashFolder> makeTrash(const std::string& trash, const std::optional<Owner>& owner);

// A folder for its owner alone. True when it was made, or was there, belongs to the owner and is not a link.
bool makePrivateFolder(const std::string& path, const std::optional<Owner>& owner);

// Moves the item there under the first free name, never replacing anything; across file systems by copying. On a
// failure the item is where it was and no note stays.
Failure moveIntoTrash(const std::string& path, const TrashFolder& trash);

// The name to try: the item's own, then with ".2", ".3", ... before the extension, later with a random number there;
// cut between two characters so that the name of its note still fits.
std::string trashName(const std::string& name, int attempt);

// The text of a note. The date is local time; in the path everything but letters, digits and "-._~/" is
// percent-encoded.
std::string trashNote(const std::string& originalPath, std::time_t when);

}  // namespace platform::linux_host
