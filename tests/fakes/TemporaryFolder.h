#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace fakes {

// An empty folder that goes, with all that lies in it, when the test ends.
class TemporaryFolder {
public:
    explicit TemporaryFolder(const std::string& parent = std::filesystem::temp_directory_path().string()) {
        std::string pattern = parent + "/wickfield-test.XXXXXX";
        if (::mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder below " + parent);
        }
        m_path = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return m_path; }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

}  // namespace fakes
