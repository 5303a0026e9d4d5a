#import "platform/macos/foundation/Dates.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>

#import "platform/macos/foundation/Guarded.h"

// As a damaged list may hold it; not every Foundation makes such a date on request.
@interface DateWithoutANumber : NSDate
@end

@implementation DateWithoutANumber

- (id)initWithTimeIntervalSinceReferenceDate:(NSTimeInterval)interval {
    (void)interval;
    return self;
}

- (NSTimeInterval)timeIntervalSinceReferenceDate {
    return std::numeric_limits<double>::quiet_NaN();
}

@end

namespace {

using platform::Date;
using platform::macos::fromNS;
using platform::macos::guarded;
using platform::macos::toNS;

Date dateAt(double seconds) {
    Date date;
    EXPECT_TRUE(guarded("a test", [&] { date = fromNS([NSDate dateWithTimeIntervalSince1970:seconds]); }));
    return date;
}

TEST(DatesOfFoundation, KeepTheMicrosecondsBeforeAndAfter1970) {
    for (const auto since : {std::chrono::microseconds(1'700'000'000'123'456), std::chrono::microseconds(-1)}) {
        Date back;
        EXPECT_TRUE(guarded("a test", [&] { back = fromNS(toNS(Date(since))); }));
        EXPECT_EQ(back, Date(since));
    }
}

TEST(DatesOfFoundation, EndNearTheLastDateWhenTheyLieBeyondAllOfThem) {
    constexpr double endless = std::numeric_limits<double>::infinity();
    EXPECT_GT(dateAt(endless), Date(Date::max().time_since_epoch() / 100 * 99));
    EXPECT_LT(dateAt(-endless), Date(Date::min().time_since_epoch() / 100 * 99));
}

TEST(DatesOfFoundation, AreTheStartOf1970WhenTheyAreNoNumber) {
    Date date = Date::max();
    EXPECT_TRUE(guarded("a test", [&] { date = fromNS([[[DateWithoutANumber alloc] init] autorelease]); }));
    EXPECT_EQ(date, Date());
}

}  // namespace
