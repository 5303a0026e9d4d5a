#include "platform/linux/services/LinuxUserDefaults.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "platform/linux/services/files/LinuxFileManager.h"
#include "platform/linux/services/propertylists/LinuxPropertyLists.h"
#include "tests/fakes/FakeIdentity.h"
#include "tests/fakes/FakeMainBundle.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

using platform::PropertyValue;

class Preferences : public testing::Test {
protected:
    Preferences() {
        m_identity.home = m_home.path();
        m_bundle.info["CFBundleIdentifier"] = PropertyValue{std::string("com.example.tiny")};
    }

    std::string path(const std::string& name = "com.example.tiny") const {
        return m_home / ("Library/Preferences/" + name + ".plist");
    }
    void write(const std::string& text) const {
        std::filesystem::create_directories(m_home / "Library/Preferences");
        std::ofstream(path()) << text;
    }
    std::string contents() const {
        std::ifstream file(path());
        return {std::istreambuf_iterator<char>(file), {}};
    }

    fakes::TemporaryFolder m_home;
    fakes::FakeIdentity m_identity;
    fakes::FakeMainBundle m_bundle;
    platform::linux_host::LinuxFileManager m_files;
    platform::linux_host::LinuxPropertyLists m_lists;
    platform::linux_host::LinuxUserDefaults m_defaults{{m_files, m_lists, m_bundle, m_identity}};
};

const PropertyValue yes{true};
const PropertyValue no{false};

TEST_F(Preferences, HoldNothingBeforeTheFirstIsSet) {
    EXPECT_EQ(m_defaults.value("suppress"), std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(m_home / "Library"));
}

TEST_F(Preferences, AreKeptInTheUsersPreferencesUnderTheBundlesIdentifier) {
    EXPECT_EQ(m_defaults.setValue("suppress", yes), std::nullopt);

    EXPECT_TRUE(std::filesystem::exists(path()));
    EXPECT_EQ(m_defaults.value("suppress"), yes);
}

TEST_F(Preferences, OfAProgramWithoutIdentifierAreKeptUnderItsName) {
    for (const auto& identifier : {PropertyValue{std::string()}, PropertyValue{std::string("../evil")}, yes}) {
        m_bundle.info["CFBundleIdentifier"] = identifier;
        m_bundle.executable = "/opt/Tiny";

        EXPECT_EQ(m_defaults.setValue("suppress", yes), std::nullopt);
        EXPECT_TRUE(std::filesystem::remove(path("Tiny")));
    }
}

TEST_F(Preferences, KeepTheValuesThatTheyDoNotKnow) {
    write("{ other = (1, 2); suppress = x; }");

    EXPECT_EQ(m_defaults.setValue("suppress", no), std::nullopt);

    EXPECT_EQ(m_defaults.value("suppress"), no);
    const PropertyValue list{platform::PropertyArray{{std::string("1")}, {std::string("2")}}};
    EXPECT_EQ(m_defaults.value("other"), list);
}

TEST_F(Preferences, ThatAreDamagedAreNotDestroyed) {
    for (const char* text : {"", "<plist><dict><key>a</key>", "(a, list)", "\xFF\xFE\xFD"}) {
        write(text);

        EXPECT_EQ(m_defaults.value("a"), std::nullopt);
        const auto failure = m_defaults.setValue("a", yes);

        ASSERT_TRUE(failure) << text;
        EXPECT_NE(failure->description.find(path()), std::string::npos) << failure->description;
        EXPECT_EQ(contents(), text);
    }
}

TEST_F(Preferences, ThatCannotBeReadAreNotDestroyed) {
    std::filesystem::create_directories(path());

    EXPECT_TRUE(m_defaults.setValue("a", yes));
    EXPECT_TRUE(std::filesystem::is_directory(path()));
}

TEST_F(Preferences, WithoutPermissionToReadAreNotDestroyed) {
    if (::getuid() == 0) {
        GTEST_SKIP() << "the superuser may read everything";
    }
    write("a = b;");
    std::filesystem::permissions(path(), std::filesystem::perms::owner_write);

    EXPECT_TRUE(m_defaults.setValue("a", yes));

    std::filesystem::permissions(path(), std::filesystem::perms::owner_all);
    EXPECT_EQ(contents(), "a = b;");
}

TEST_F(Preferences, ThatCannotBeWrittenAreAFailure) {
    std::ofstream(m_home / "Library") << "in the way";

    EXPECT_TRUE(m_defaults.setValue("a", yes));
    EXPECT_EQ(m_defaults.value("a"), std::nullopt);
}

TEST_F(Preferences, SetOnSeveralThreadsAreAllKept) {
    {
        std::vector<std::jthread> threads;
        threads.reserve(4);
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([this, thread] {
                for (int i = 0; i < 5; ++i) {
                    m_defaults.setValue(std::to_string(thread) + "-" + std::to_string(i), yes);
                }
            });
        }
    }
    for (int thread = 0; thread < 4; ++thread) {
        for (int i = 0; i < 5; ++i) {
            EXPECT_EQ(m_defaults.value(std::to_string(thread) + "-" + std::to_string(i)), yes);
        }
    }
}

}  // namespace
