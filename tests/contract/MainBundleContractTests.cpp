#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "HostUnderTest.h"
#include "tests/fakes/FakeMainBundle.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

using platform::PropertyValue;

// What every host's bundle promises, for one with two resources and an identifier.
class MainBundleContract : public testing::TestWithParam<bool> {
protected:
    MainBundleContract() {
        const std::string contents = m_folder / "Tiny.app/Contents";
        const std::string programs = contents + "/" + host_under_test::programFolder;
        for (const std::string& folder : {programs, contents + "/Resources/images"}) {
            std::filesystem::create_directories(folder);
        }
        std::ofstream(contents + "/Info.plist")
            << "{ CFBundleIdentifier = com.example.tiny; CFBundleExecutable = Tiny; }";
        std::ofstream(programs + "/Tiny") << "#!/bin/sh\n";
        std::filesystem::permissions(programs + "/Tiny", std::filesystem::perms::owner_all);
        m_fake.bundle = m_folder / "Tiny.app";
        m_fake.resourcesFolder = contents + "/Resources";
        m_fake.executable = programs + "/Tiny";
        m_fake.info["CFBundleIdentifier"] = PropertyValue{std::string("com.example.tiny")};
        for (const char* name : {"Read Me", "images/a.b.png"}) {
            m_fake.resources[name] = m_fake.resourcesFolder + "/" + name;
            std::ofstream(m_fake.resourcesFolder + "/" + name) << "x";
        }
    }
    platform::MainBundle& bundle() { return GetParam() ? static_cast<platform::MainBundle&>(m_real) : m_fake; }
    const std::string& resources() const { return m_fake.resourcesFolder; }

    fakes::TemporaryFolder m_folder;

private:
    fakes::FakeMainBundle m_fake;
    host_under_test::MainBundle m_real{m_folder / "Tiny.app", "Tiny"};
};

TEST_P(MainBundleContract, KnowsItsPlaces) {
    EXPECT_EQ(bundle().bundlePath(), m_folder / "Tiny.app");
    EXPECT_EQ(bundle().resourcePath(), m_folder / "Tiny.app/Contents/Resources");
    EXPECT_EQ(bundle().executablePath(),
              m_folder / "Tiny.app/Contents" + "/" + host_under_test::programFolder + "/Tiny");
}

TEST_P(MainBundleContract, FindsResourcesByNameAndType) {
    EXPECT_EQ(bundle().pathForResource("Read Me", ""), resources() + "/Read Me");
    EXPECT_EQ(bundle().pathForResource("images/a.b", "png"), resources() + "/images/a.b.png");
}

TEST_P(MainBundleContract, FindsNoResourceThatIsNotThere) {
    EXPECT_EQ(bundle().pathForResource("Read Me", "txt"), std::nullopt);
    EXPECT_EQ(bundle().pathForResource("images/a", "png"), std::nullopt);
}

TEST_P(MainBundleContract, KnowsTheValuesOfItsInformation) {
    EXPECT_EQ(bundle().infoValue("CFBundleIdentifier"), PropertyValue{std::string("com.example.tiny")});
    EXPECT_EQ(bundle().infoValue("CFBundleName"), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Hosts, MainBundleContract, testing::Bool(),
                         [](const auto& tested) { return tested.param ? host_under_test::name : "Fake"; });

}  // namespace
