// For tests that make items of other owners, as only the superuser can.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>

#include "tests/fakes/TemporaryFolder.h"

namespace tests {

// Accounts that nobody has: their numbers are all that matters.
constexpr uid_t alice = 23451;
constexpr uid_t bob = 23452;

// The folder is the superuser's own, as are those above it, which the usual one for temporary files is not.
class RootsFolder : public testing::Test {
protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "only the superuser can make items of other owners";
        }
    }

    const std::string& top() const { return m_folder.path(); }
    std::string at(const std::string& name) const { return m_folder / name; }

    std::string makeFolder(const std::string& name, uid_t owner = 0, mode_t mode = 0755) const {
        std::string path = at(name);
        succeeded(::mkdir(path.c_str(), 0700));
        succeeded(::chmod(path.c_str(), mode));
        succeeded(::lchown(path.c_str(), owner, owner));
        succeeded(::chmod(path.c_str(), mode));
        return path;
    }

    std::string makeFile(const std::string& name, uid_t owner = 0, const std::string& text = "text") const {
        std::string path = at(name);
        std::ofstream(path) << text;
        succeeded(::chmod(path.c_str(), 0644));
        succeeded(::lchown(path.c_str(), owner, owner));
        return path;
    }

    std::string makeLink(const std::string& name, const std::string& target, uid_t owner = 0) const {
        std::string path = at(name);
        succeeded(::symlink(target.c_str(), path.c_str()));
        succeeded(::lchown(path.c_str(), owner, owner));
        return path;
    }

    static std::string textOf(const std::string& path) {
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    static void succeeded(int result) {
        if (result != 0) {
            throw std::system_error(errno, std::generic_category());
        }
    }

    fakes::TemporaryFolder m_folder{std::filesystem::exists("/var/lib") && ::geteuid() == 0 ? "/var/lib" : "/tmp"};
};

}  // namespace tests
