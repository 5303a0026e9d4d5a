// What an item carries besides its contents.
#pragma once

#include <sys/stat.h>

namespace platform::linux_host {

// Whether the copy was made in a folder that may have handed it an access list.
enum class Inheritance { none, possible };

// Gives the copy (open for writing, or an open folder) the source's owner, extended attributes, access lists, mode and
// times, in an order in which none undoes another. An ordinary user cannot give files away: the copy stays his own,
// and a set-id bit is dropped with the identity that it stood for. What the copy's file system cannot hold at all is
// left out; anything else that fails is an errno, 0 is success.
int copyMetadata(int from, const struct stat& source, int to, Inheritance inheritance);

// The same for a link, which has no mode and no attributes.
int copyLinkMetadata(const struct stat& source, int folder, const char* name);

}  // namespace platform::linux_host
