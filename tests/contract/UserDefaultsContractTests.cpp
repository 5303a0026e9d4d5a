#include <gtest/gtest.h>

#include "HostUnderTest.h"
#include "tests/fakes/FakeUserDefaults.h"

namespace {

using platform::PropertyValue;

// What every host's user defaults promise.
class UserDefaultsContract : public testing::TestWithParam<bool> {
protected:
    platform::UserDefaults& defaults() { return GetParam() ? m_real.get() : m_fake; }

private:
    host_under_test::UserDefaults m_real;
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
                         [](const auto& tested) { return tested.param ? host_under_test::name : "Fake"; });

}  // namespace
