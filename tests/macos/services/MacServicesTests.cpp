// What the Mac's own services promise beyond the contracts.
#include <gtest/gtest.h>

#include "platform/macos/services/MacPropertyLists.h"

namespace {

using platform::PropertyValue;

TEST(MacPropertyLists, RefuseAListThatIsNestedWithoutEnd) {
    std::string bytes = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\">";
    for (int level = 0; level < 600; ++level) {
        bytes += "<array>";
    }
    for (int level = 0; level < 600; ++level) {
        bytes += "</array>";
    }
    const auto read = platform::macos::MacPropertyLists().parse(bytes + "</plist>");
    EXPECT_TRUE(std::holds_alternative<platform::Error>(read));
}

TEST(MacPropertyLists, TellTruthValuesFromNumbers) {
    platform::macos::MacPropertyLists lists;
    const PropertyValue list{platform::PropertyArray{{true}, {std::int64_t{1}}, {1.0}, {false}, {std::int64_t{0}}}};
    const auto read = lists.parse(lists.serialize(list));
    ASSERT_TRUE(std::holds_alternative<PropertyValue>(read));
    const auto& values = *std::get<PropertyValue>(read).as<platform::PropertyArray>();
    EXPECT_NE(values.at(0).as<bool>(), nullptr);
    EXPECT_NE(values.at(1).as<std::int64_t>(), nullptr);
    EXPECT_NE(values.at(3).as<bool>(), nullptr);
}

}  // namespace
