#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "platform/ports/Authorization.h"

using ::testing::HasSubstr;
using ::testing::Not;

namespace {

using platform::Credentials;

// Short enough to be kept within the object itself.
constexpr const char* password = "open sesame";

template <class Object>
struct Place {
    alignas(Object) std::array<char, sizeof(Object)> bytes{};

    std::string contents() const { return {bytes.data(), bytes.size()}; }
};

TEST(Credentials, AreOverwrittenWhenTheyGo) {
    Place<Credentials> place;
    auto* const held = ::new (place.bytes.data()) Credentials{.user = "ada", .password = password};
    EXPECT_THAT(place.contents(), HasSubstr(password));
    std::destroy_at(held);
    EXPECT_THAT(place.contents(), Not(HasSubstr(password)));
}

TEST(Credentials, AreOverwrittenInTheirCopies) {
    const Credentials original{.user = "ada", .password = password};
    Place<std::optional<Credentials>> place;
    auto* const copy = ::new (place.bytes.data()) std::optional<Credentials>(original);
    EXPECT_THAT(place.contents(), HasSubstr(password));
    std::destroy_at(copy);
    EXPECT_THAT(place.contents(), Not(HasSubstr(password)));
    EXPECT_EQ(original.password, password);
}

TEST(Credentials, AreOverwrittenAfterTheirPasswordWasMadeShorter) {
    Place<Credentials> place;
    auto* const held = ::new (place.bytes.data()) Credentials{.user = "ada", .password = password};
    held->password.resize(1);
    std::destroy_at(held);
    EXPECT_THAT(place.contents(), Not(HasSubstr(std::string_view(password).substr(2))));
}

}  // namespace
