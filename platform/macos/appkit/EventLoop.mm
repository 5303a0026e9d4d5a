#import "platform/macos/appkit/EventLoop.h"

#import <AppKit/AppKit.h>

namespace platform::macos {

void wakeEventLoop() {
    [NSApp postEvent:[NSEvent otherEventWithType:NSEventTypeApplicationDefined
                                        location:NSZeroPoint
                                   modifierFlags:0
                                       timestamp:0
                                    windowNumber:0
                                         context:nil
                                         subtype:0
                                           data1:0
                                           data2:0]
             atStart:NO];
}

}  // namespace platform::macos
