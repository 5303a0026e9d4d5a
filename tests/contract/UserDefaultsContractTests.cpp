#include <gtest/gtest.h>

#include "platform/linux/services/LinuxUserDefaults.h"
#include "platform/linux/services/files/LinuxFileManager.h"
#include "platform/linux/services/propertylists/LinuxPropertyLists.h"
#include "tests/fakes/FakeIdentity.h"
#include "tests/fakes/FakeMainBundle.h"
#include "tests/fakes/FakeUserDefaults.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

using platform::PropertyValue;

// What every host's user defaults promise.
class UserDefaultsContract : public testing::TestWithParam<bool> {
protected:
    UserDefaultsContract() { m_identity.home = m_home.path(); }
    platform::UserDefaults& defaults() { return GetParam() ? static_cast<platform::UserDefaults&>(m_real) : m_fake; }

private:
    fakes::TemporaryFolder m_home;
    fakes::FakeIdentity m_identity;
    fakes::FakeMainBundle m_bundle;
    platform::linux_host::LinuxFileManager m_files;
    platform::linux_host::LinuxPropertyLists m_lists;
    platform::linux_host::LinuxUserDefaults m_real{{m_files, m_lists, m_bundle, m_identity}};
    fakes::FakeUserDefaults m_fake;
};

TEST_P(UserDefaultsContract, HoldNothingUnderAKeyThatWasNotSet) {
    EXPECT_EQ(defaults().value("suppress"), std::nullopt);
}

TEST_P(UserDefaultsContract, HoldWhatWasSetLast) {
    EXPECT_FALSE(defaults().setValue("suppress", PropertyValue{true}));
    EXPECT_FALSE(defaults().setValue("suppress", PropertyValue{false}));

    EXPECT_EQ(defaults().value("suppress"), PropertyValue{false});
}

TEST_P(UserDefaultsContract, HoldValuesOfAnyKindUnderAnyKey) {
    const PropertyValue list{platform::PropertyArray{{std::int64_t{-1}}, {1.5}, {std::string("é\n")}}};

    EXPECT_FALSE(defaults().setValue("a key with <&> é\n", list));

    EXPECT_EQ(defaults().value("a key with <&> é\n"), list);
}

INSTANTIATE_TEST_SUITE_P(Hosts, UserDefaultsContract, testing::Bool(),
                         [](const auto& tested) { return tested.param ? "Linux" : "Fake"; });

}  // namespace
