#include "platform/posix/AppendHandle.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <string_view>
#include <utility>

#include "platform/posix/Descriptor.h"
#include "platform/posix/FileErrors.h"
#include "platform/posix/PathParts.h"
#include "platform/posix/WriteAll.h"

namespace platform::posix {

namespace {

class PosixAppendHandle : public FileManager::AppendHandle {
public:
    PosixAppendHandle(Descriptor file, std::string path) : m_file(std::move(file)), m_path(std::move(path)) {}

    Failure append(std::string_view bytes) override {
        const std::string withBreak = m_cutShort ? "\n" + std::string(bytes) : std::string();
        const std::string_view piece = m_cutShort ? withBreak : bytes;
        std::string_view left = piece;
        const int code = writeAll(m_file.get(), left);
        if (left.size() < piece.size()) {
            m_cutShort = code != 0 && !piece.substr(0, piece.size() - left.size()).ends_with('\n');
        }
        return code == 0 ? Failure{} : fileError("write", m_path, code);
    }

private:
    Descriptor m_file;
    std::string m_path;
    bool m_cutShort = false;  // the file ends within a line that could not be finished
};

}  // namespace

std::unique_ptr<FileManager::AppendHandle> openAppendHandle(const std::string& path) {
    Descriptor file(::open(systemPath(path), O_WRONLY | O_APPEND | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return nullptr;
    }
    return std::make_unique<PosixAppendHandle>(std::move(file), path);
}

}  // namespace platform::posix
