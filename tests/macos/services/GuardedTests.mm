#import "platform/macos/foundation/Guarded.h"

#include <gtest/gtest.h>

namespace {

TEST(TheEdge, KeepsAnExceptionOfObjectiveCFromCpp) {
    bool begun = false;
    const bool ended = platform::macos::guarded("a test", [&begun] {
        begun = true;
        [NSException raise:NSInvalidArgumentException format:@"on purpose"];
    });
    EXPECT_TRUE(begun);
    EXPECT_FALSE(ended);
}

TEST(TheEdge, LetsWorkThroughThatRaisesNothing) {
    EXPECT_TRUE(platform::macos::guarded("a test", [] {}));
}

}  // namespace
