// Open files by the calls that all hosts of this kind have.
#pragma once

#include "platform/ports/OpenFiles.h"

namespace platform::posix {

class PosixOpenFiles : public OpenFiles {
public:
    // What an item carries besides its contents differs from host to host: copies it from one descriptor to another, 0
    // or an errno.
    using CopyAttributes = int (*)(int from, int to);

    explicit PosixOpenFiles(CopyAttributes copyAttributes) : m_copyAttributes(copyAttributes) {}

    // A file of the kernel's own that has nothing to give yet is not waited for: reading it fails with EAGAIN.
    Opened openForReading(const std::string& path) override;
    Opened openForWriting(const std::string& path) override;
    std::FILE* openStream(const std::string& path) override;
    void closeDescriptor(int number) override;

private:
    const CopyAttributes m_copyAttributes;
};

}  // namespace platform::posix
