#import "platform/macos/foundation/Dates.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace platform::macos {

namespace {

using Seconds = std::chrono::duration<double>;
using std::chrono::microseconds;

// A little less than what a Date holds, so that rounding does not lead out of it.
constexpr double mostSeconds = Seconds(Date::max().time_since_epoch()).count() * 0.999;

}  // namespace

NSDate* toNS(Date date) { return [NSDate dateWithTimeIntervalSince1970:Seconds(date.time_since_epoch()).count()]; }

Date fromNS(NSDate* date) {
    const double interval = [date timeIntervalSince1970];
    const double seconds = std::isnan(interval) ? 0 : std::clamp(interval, -mostSeconds, mostSeconds);
    const double whole = std::floor(seconds);
    const auto rest = std::llround((seconds - whole) * 1e6);
    return Date(std::chrono::duration_cast<Date::duration>(std::chrono::seconds(static_cast<long long>(whole)) +
                                                           microseconds(rest)));
}

}  // namespace platform::macos
