// A maker's folder with sources and a template in it, on the real file system.
#pragma once

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "platform/linux/services/LinuxHost.h"
#include "platform/ports/Host.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tools/wickfield-bundle/create/BundlePlan.h"
#include "tools/wickfield-bundle/create/BundleWriter.h"
#include "tools/wickfield-bundle/create/CreateFailure.h"

class CreateFixture : public ::testing::Test {
protected:
    CreateFixture() {
        write("Template.app/Contents/Linux/Wickfield", "#!/bin/sh\n", 0755);
        write("Template.app/Contents/Linux/tools/ditto", "#!/bin/sh\n", 0755);
        project.name = "Brook";
        project.version = "1.3";
        project.author = "Fenwick Audio";
    }

    std::string write(const std::string& name, const std::string& contents = "contents", mode_t mode = 0644) {
        std::string path = place / name;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << contents;
        ::chmod(path.c_str(), mode);
        return path;
    }
    std::string makeFolder(const std::string& name) {
        std::filesystem::create_directories(place / name);
        return place / name;
    }
    static std::string read(const std::string& path) {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    }
    static bool stands(const std::string& path) {
        return std::filesystem::exists(std::filesystem::symlink_status(path));
    }
    static struct stat look(const std::string& path) {
        struct stat status {};
        EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
        return status;
    }
    static unsigned modeOf(const std::string& path) { return look(path).st_mode & 07777U; }
    static void setTime(const std::string& path, time_t seconds, long nanoseconds = 0) {
        const timespec times[] = {{.tv_sec = seconds, .tv_nsec = nanoseconds},
                                  {.tv_sec = seconds, .tv_nsec = nanoseconds}};
        ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << path;
    }
    void setAllTimes(time_t seconds) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(place.path())) {
            setTime(entry.path(), seconds);
        }
    }

    void addItem(const std::string& source, const std::string& destination) {
        project.items.push_back({place / source, destination});
    }

    std::vector<wickfield_bundle::Template> templates(const std::vector<std::string>& hosts = {}) {
        return wickfield_bundle::chooseTemplates({.paths = {place / "Template.app"}, .hosts = hosts});
    }
    wickfield_bundle::BundlePlan plan() { return wickfield_bundle::planBundle(project, templates(), warn); }
    wickfield_bundle::WrittenBundle create() { return wickfield_bundle::writeBundle(plan(), wishes); }

    // What is said of a project that makes no sense.
    std::string complaint() {
        try {
            plan();
        } catch (const wickfield_bundle::SenselessProject& problem) {
            return problem.what();
        }
        return "";
    }
    // What keeps a bundle from being made, whose words are no SenselessProject's.
    std::string failure() {
        try {
            create();
        } catch (const wickfield_bundle::SenselessProject& problem) {
            ADD_FAILURE() << problem.what();
        } catch (const wickfield_bundle::CreateFailure& problem) {
            return problem.what();
        }
        return "";
    }

    std::string bundle() const { return out + "/Brook Installer.app"; }
    std::string tree() const { return bundle() + "/Contents/Resources/PluginStructure"; }
    std::vector<std::string> inOutput() const {
        std::vector<std::string> names;
        if (std::filesystem::exists(out)) {
            for (const auto& entry : std::filesystem::directory_iterator(out)) {
                names.push_back(entry.path().filename());
            }
        }
        return names;
    }

    fakes::TemporaryFolder place;
    std::string out = place / "out";
    wickfield_bundle::Project project;
    std::vector<std::string> warnings;
    std::function<void(const std::string&)> warn = [this](const std::string& words) { warnings.push_back(words); };
    wickfield_bundle::WriteWishes wishes{.outputFolder = out,
                                         .replace = wickfield_bundle::Replace::no,
                                         .archives = false,
                                         .latestTime = {},
                                         .warn = warn};
    platform::ScopedHost host{platform::linux_host::services()};
};
