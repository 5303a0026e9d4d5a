// Copying the maker's files and folders into a bundle.
#pragma once

#include <sys/stat.h>

#include <functional>
#include <string>
#include <utility>

#include "tools/wickfield-bundle/create/FileTimes.h"

namespace wickfield_bundle {

// Contents, modes, owner (for the superuser), access lists and extended attributes are kept, but for the mark of a
// quarantine; links inside stay links. Any depth.
class SourceCopier {
public:
    using Warn = std::function<void(const std::string&)>;

    SourceCopier(FileTimes& times, Warn warn) : m_times(times), m_warn(std::move(warn)) {}

    // Copies what the source is, or leads to if it is a link, into the open folder under a name that is free there.
    // Throws CreateFailure, also for a source that changes meanwhile, or CreateInterrupted; what was copied by then
    // stays.
    void copy(const std::string& source, int folder, const std::string& name);

private:
    class FolderCopy;
    struct SourceFile;

    void copyFile(const SourceFile& source, int folder, const std::string& name);
    void copyLink(const SourceFile& source, int folder);
    struct stat forCopy(const struct stat& status, const std::string& path);

    FileTimes& m_times;
    Warn m_warn;
};

}  // namespace wickfield_bundle
