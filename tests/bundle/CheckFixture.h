// An installer's bundle made by hand in a folder of its own, and what a rule finds in it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "platform/linux/services/LinuxHost.h"
#include "platform/ports/Host.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tools/wickfield-bundle/check/Check.h"

namespace wickfield_bundle {

// What a finding is about: its rule and its place.
struct Found {
    std::string rule;
    std::string place;
    friend bool operator==(const Found&, const Found&) = default;
};
inline void PrintTo(const Found& found, std::ostream* out) { *out << found.rule << " at " << found.place; }

class CheckFixture : public testing::Test {
protected:
    using Rule = void (*)(const CheckedBundle&, Findings&);

    static constexpr const char* treePlace = "Contents/Resources/PluginStructure";

    CheckFixture() { std::filesystem::create_directories(bundle() + "/" + treePlace); }

    std::string bundle() const { return m_folder / "Example Installer.app"; }
    std::string inTree(const std::string& path) const { return std::string(treePlace) + "/" + path; }

    // All three by the place from the bundle's folder; the folders above are made.
    void write(const std::string& place, const std::string& text = "text\n", unsigned mode = 0644) {
        const std::string path = pathFor(place);
        std::ofstream(path, std::ios::binary) << text;
        ASSERT_EQ(::chmod(path.c_str(), mode), 0) << path;
    }
    void link(const std::string& place, const std::string& target) {
        std::filesystem::create_symlink(target, pathFor(place));
    }
    void folder(const std::string& place, unsigned mode = 0755) {
        std::filesystem::create_directories(pathFor(place));
        ASSERT_EQ(::chmod(pathFor(place).c_str(), mode), 0) << place;
    }

    Findings findingsOf(Rule rule) {
        const platform::ScopedHost scope(platform::linux_host::services());
        Findings findings;
        rule(lookAt(bundle()), findings);
        return findings;
    }
    std::vector<Found> found(Rule rule) {
        std::vector<Found> found;
        for (const Finding& finding : findingsOf(rule)) {
            found.push_back({finding.rule, finding.place});
        }
        return found;
    }
    // Of the one finding that there has to be.
    std::string reason(Rule rule) {
        const Findings findings = findingsOf(rule);
        EXPECT_EQ(findings.size(), 1U);
        return findings.empty() ? "" : findings.front().reason;
    }

    fakes::TemporaryFolder& around() { return m_folder; }

private:
    std::string pathFor(const std::string& place) const {
        const std::filesystem::path path = bundle() + "/" + place;
        std::filesystem::create_directories(path.parent_path());
        return path.string();
    }

    fakes::TemporaryFolder m_folder;
};

}  // namespace wickfield_bundle
