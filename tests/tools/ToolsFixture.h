// A temporary place, and tools run in it as programs.
#pragma once

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "platform/posix/ArgumentPointers.h"
#include "tests/fakes/TemporaryFolder.h"

class ToolsFixture : public ::testing::Test {
protected:
    struct Outcome {
        int status = -1;  // exit status, or 128 and the signal
        std::string output{};
        std::string errors{};
    };

    std::string write(const std::string& name, const std::string& contents = "contents") {
        std::filesystem::create_directories(std::filesystem::path(place / name).parent_path());
        std::ofstream(place / name, std::ios::binary) << contents;
        return place / name;
    }
    std::string makeFolder(const std::string& name) {
        std::filesystem::create_directories(place / name);
        return place / name;
    }
    std::string read(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(place / name, std::ios::binary).rdbuf();
        return text.str();
    }
    // Whether anything stands there, a dangling link included.
    bool stands(const std::string& name) const {
        return std::filesystem::exists(std::filesystem::symlink_status(place / name));
    }
    struct stat look(const std::string& name) const {
        struct stat status {};
        EXPECT_EQ(::lstat((place / name).c_str(), &status), 0) << name;
        return status;
    }
    unsigned modeOf(const std::string& name) const { return look(name).st_mode & 07777U; }
    std::string targetOf(const std::string& name) const { return std::filesystem::read_symlink(place / name).string(); }
    void setTime(const std::string& name, time_t seconds) const {
        const timespec times[] = {{.tv_sec = seconds, .tv_nsec = 0}, {.tv_sec = seconds, .tv_nsec = 0}};
        ::utimensat(AT_FDCWD, (place / name).c_str(), times, AT_SYMLINK_NOFOLLOW);
    }
    // The relative paths of all that lies below, sorted.
    std::vector<std::string> tree(const std::string& name) const {
        std::vector<std::string> paths;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(place / name)) {
            paths.push_back(entry.path().string().substr((place / name).size() + 1));
        }
        std::sort(paths.begin(), paths.end());
        return paths;
    }
    std::vector<std::string> tree() const { return tree("."); }

    // `prepare` runs in the child before the program.
    Outcome run(const std::vector<std::string>& command, const std::function<void()>& prepare = {}) const {
        const pid_t child = start(command, prepare);
        int status = 0;
        ::waitpid(child, &status, 0);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), read(".output"), read(".errors")};
    }
    Outcome tool(const std::string& name, std::vector<std::string> arguments,
                 const std::function<void()>& prepare = {}) const {
        arguments.insert(arguments.begin(), toolPath(name));
        return run(arguments, prepare);
    }
    pid_t start(const std::vector<std::string>& command, const std::function<void()>& prepare = {}) const {
        const auto words = platform::posix::pointersTo(command);
        const pid_t child = ::fork();
        if (child == 0) {
            redirect(STDOUT_FILENO, ".output");
            redirect(STDERR_FILENO, ".errors");
            (void)::chdir(place.path().c_str());
            if (prepare) {
                prepare();
            }
            ::execvp(words[0], words.data());
            ::_exit(127);
        }
        return child;
    }
    static std::string toolPath(const std::string& name) { return std::string(WICKFIELD_TOOLS_FOLDER) + "/" + name; }
    static bool hasProgram(const std::string& name) {
        return std::system(("command -v " + name + " > /dev/null 2>&1").c_str()) == 0;
    }

    fakes::TemporaryFolder place;

private:
    void redirect(int stream, const std::string& name) const {
        const int file = ::open((place / name).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        ::dup2(file, stream);
    }
};
