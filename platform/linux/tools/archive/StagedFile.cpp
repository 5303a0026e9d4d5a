#include "platform/linux/tools/archive/StagedFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "platform/linux/tools/archive/FileBytes.h"
#include "platform/posix/StagedName.h"

namespace platform::linux_host {

StagedFile::StagedFile(const std::string& path) : m_path(path), m_staged(posix::stagedSibling(path)) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
        failWithErrno("cannot write", path, EISDIR);
    }
    m_file.reset(::open(m_staged.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
    if (!m_file) {
        failWithErrno("cannot write", path, errno);
    }
}

StagedFile::~StagedFile() {
    if (!m_staged.empty()) {
        (void)::unlink(m_staged.c_str());
    }
}

void StagedFile::takePlace() {
    if (::close(m_file.release()) != 0 || ::rename(m_staged.c_str(), m_path.c_str()) != 0) {
        failWithErrno("cannot write", m_path, errno);
    }
    m_staged.clear();
}

}  // namespace platform::linux_host
