// The edge between C++ and Objective-C: no exception of either crosses it.
#pragma once

#import <Foundation/Foundation.h>

namespace platform::macos {

// Runs the work within an autorelease pool of its own. An exception of Objective-C's ends here, with a line on the
// system console that begins with `where`; false then. What the work has done so far stays done.
template <typename Work>
bool guarded(const char* where, const Work& work) {
    @autoreleasepool {
        @try {
            work();
            return true;
        } @catch (NSException* exception) {
            NSLog(@"Exception in %s. %@ - %@.", where, [exception name], [exception reason]);
            return false;
        }
    }
}

}  // namespace platform::macos
