// Points in time between C++ and Foundation.
#pragma once

#import <Foundation/Foundation.h>

#include "platform/ports/Date.h"

namespace platform::macos {

NSDate* toNS(Date date);  // autoreleased

// To the microsecond, which is as much as Foundation keeps; what no Date can hold becomes the nearest that it can.
Date fromNS(NSDate* date);

}  // namespace platform::macos
