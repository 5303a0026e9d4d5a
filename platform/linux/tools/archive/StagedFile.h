// A file that is written under a hidden name before it takes its own.
#pragma once

#include <string>

#include "platform/posix/Descriptor.h"

namespace platform::linux_host {

class StagedFile {
public:
    explicit StagedFile(const std::string& path);  // throws ToolFailure
    ~StagedFile();                                 // removes it unless it took its place
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;

    int file() const { return m_file.get(); }

    // Closes it and puts it in place of whatever file has its name. Throws ToolFailure.
    void takePlace();

private:
    std::string m_path;
    std::string m_staged;
    posix::Descriptor m_file;
};

}  // namespace platform::linux_host
