#pragma once

#include <sys/stat.h>

#include <fstream>
#include <string>

#include "tests/fakes/TemporaryFolder.h"

// A script in a folder of its own.
class ScriptFile {
public:
    explicit ScriptFile(const std::string& contents, mode_t mode = 0755) {
        std::ofstream(path()) << contents;
        ::chmod(path().c_str(), mode);
    }
    std::string path() const { return m_folder / "script"; }
    std::string beside(const std::string& name) const { return m_folder / name; }

private:
    fakes::TemporaryFolder m_folder;
};
