// Real items in a folder of the test's own, named by their paths in it.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/fakes/TemporaryFolder.h"

class FolderFixture : public testing::Test {
protected:
    std::string at(const std::string& name) const { return m_folder / name; }

    void write(const std::string& name, const std::string& contents) const {
        std::ofstream(at(name), std::ios::binary) << contents;
    }
    std::string read(const std::string& name) const {
        std::ifstream file(at(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void makeFolder(const std::string& name) const { std::filesystem::create_directories(at(name)); }
    void link(const std::string& name, const std::string& target) const {
        std::filesystem::create_symlink(target, at(name));
    }
    void setMode(const std::string& name, mode_t mode) const { ASSERT_EQ(::chmod(at(name).c_str(), mode), 0); }
    struct stat status(const std::string& name) const {
        struct stat status {};
        EXPECT_EQ(::lstat(at(name).c_str(), &status), 0) << name;
        return status;
    }
    bool isThere(const std::string& name) const {
        return std::filesystem::exists(std::filesystem::symlink_status(at(name)));
    }
    std::vector<std::string> names(const std::string& folder) const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(at(folder))) {
            found.push_back(entry.path().filename().string());
        }
        return found;
    }

    static bool isSuperuser() { return ::geteuid() == 0; }

private:
    fakes::TemporaryFolder m_folder;
};
