// What kind of item an entry of a folder is.
#pragma once

#include "platform/ports/FileManager.h"

namespace platform::posix {

// By the mode that stat gives.
FileType typeOfMode(unsigned mode);

// By the type that comes with the entry when the folder is read; not every file system knows it.
FileType typeOfEntry(unsigned char type);

// The folder itself and the one above, which every folder lists.
constexpr bool isDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

}  // namespace platform::posix
