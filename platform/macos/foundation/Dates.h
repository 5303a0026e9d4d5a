// Points in time between C++ and Foundation.
#pragma once

#import <Foundation/Foundation.h>

#include "platform/ports/Date.h"

namespace platform::macos {

NSDate* toNS(Date date);  // autoreleased

// To the microsecond, which is as much as Foundation keeps; what no Date can hold becomes about the nearest that it
// can, and what is no number, as a damaged binary list may hold it, the start of 1970.
Date fromNS(NSDate* date);

}  // namespace platform::macos
