// Attributes of a folder's entries, by their names alone.
#pragma once

#include <string>

#include "platform/ports/FileManager.h"

namespace wickfield_bundle {

// Made and used on one thread, which is not the process's first: the thread gets a working folder of its own, so that
// nothing but a name has to be looked up. Where the system does not allow that, whole paths are.
class EntryAttributes {
public:
    explicit EntryAttributes(platform::FileManager& files);

    // `path` is the same entry's.
    bool isQuarantined(int folder, const std::string& name, const std::string& path);  // has the mark of a download
    bool isPackage(int folder, const std::string& name, const std::string& path);

    void leave() { m_present = -1; }  // the folder's descriptor goes, and its number may be another's soon

private:
    bool isIn(int folder);

    platform::FileManager& m_files;
    bool m_hasOwnFolder;
    int m_present = -1;  // the folder that the thread works in
};

}  // namespace wickfield_bundle
