#import <Foundation/Foundation.h>

#include <gtest/gtest.h>

#include <iostream>
#include <string>

#import "platform/macos/services/MacUncaughtExceptions.h"

@interface WickfieldSilentException : NSException
@end

@implementation WickfieldSilentException

- (NSString*)reason {
    return nil;
}

@end

@interface WickfieldRaiser : NSObject
+ (void)raise:(Class)kind;
@end

@implementation WickfieldRaiser

+ (void)raise:(Class)kind {
    @autoreleasepool {
        @throw [[[kind alloc] initWithName:@"WickfieldTestException" reason:@"the roof is at 100% load"
                                  userInfo:nil] autorelease];
    }
}

@end

namespace {

void tell(const std::string& reason) { std::cerr << "told: " << reason << std::endl; }

// With nobody on the way who catches it.
void raiseOnAThread(Class kind) {
    @autoreleasepool {
        platform::macos::MacUncaughtExceptions().setHandler(tell);
        [NSThread detachNewThreadSelector:@selector(raise:) toTarget:[WickfieldRaiser class] withObject:kind];
        [NSThread sleepForTimeInterval:30];
    }
}

TEST(AnExceptionOfObjectiveC, ThatNobodyCatchesIsToldByItsReason) {
    EXPECT_DEATH(raiseOnAThread([NSException class]), "told: the roof is at 100% load\n");
}

TEST(AnExceptionOfObjectiveC, ThatGivesNoReasonIsToldByItsName) {
    EXPECT_DEATH(raiseOnAThread([WickfieldSilentException class]), "told: WickfieldTestException\n");
}

}  // namespace
