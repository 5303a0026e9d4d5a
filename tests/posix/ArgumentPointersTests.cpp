#include "platform/posix/ArgumentPointers.h"

#include <gtest/gtest.h>

namespace {

using platform::posix::pointersTo;

TEST(ArgumentPointers, LeadToTheTextsThemselvesAndEndWithNull) {
    const std::vector<std::string> texts{"/bin/tool", "", "a b"};
    const auto pointers = pointersTo(texts);
    ASSERT_EQ(pointers.size(), 4U);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(pointers[i], texts[i].c_str());
    }
    EXPECT_EQ(pointers.back(), nullptr);
}

TEST(ArgumentPointers, OfNoTextsAreTheNullAlone) { EXPECT_EQ(pointersTo({}), std::vector<char*>{nullptr}); }

}  // namespace
