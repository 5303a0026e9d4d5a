#include "platform/posix/FileTypes.h"

#include <dirent.h>
#include <sys/stat.h>

namespace platform::posix {

FileType typeOfMode(unsigned mode) {
    switch (mode & S_IFMT) {
        case S_IFREG:
            return FileType::regular;
        case S_IFDIR:
            return FileType::folder;
        case S_IFLNK:
            return FileType::symbolicLink;
        default:
            return FileType::other;
    }
}

FileType typeOfEntry(unsigned char type) {
    switch (type) {
        case DT_REG:
            return FileType::regular;
        case DT_DIR:
            return FileType::folder;
        case DT_LNK:
            return FileType::symbolicLink;
        case DT_UNKNOWN:
            return FileType::unknown;
        default:
            return FileType::other;
    }
}

}  // namespace platform::posix
