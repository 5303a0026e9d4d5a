#import "platform/macos/foundation/PropertyConversion.h"

#include <gtest/gtest.h>

#include <limits>

#import "platform/macos/foundation/Guarded.h"

namespace {

using platform::macos::guarded;
using platform::macos::valueFromNS;

class Conversion : public testing::TestWithParam<std::int64_t> {};

TEST_P(Conversion, KeepsAWholeNumber) {
    const bool ended = guarded("a test", [] {
        EXPECT_EQ(valueFromNS([NSNumber numberWithLongLong:GetParam()]), platform::PropertyValue{GetParam()});
    });
    EXPECT_TRUE(ended);
}

INSTANTIATE_TEST_SUITE_P(Numbers, Conversion,
                         testing::Values(-1, 2, std::numeric_limits<std::int64_t>::min(),
                                         std::numeric_limits<std::int64_t>::max()));

TEST(TheConversion, RefusesANumberThatItCannotHoldRatherThanCutItShort) {
    const bool ended = guarded("a test", [] {
        id const number = [NSNumber numberWithUnsignedLongLong:std::numeric_limits<std::uint64_t>::max()];
        EXPECT_FALSE(valueFromNS(number));
        EXPECT_FALSE(valueFromNS([NSArray arrayWithObject:number]));
    });
    EXPECT_TRUE(ended);
}

}  // namespace
