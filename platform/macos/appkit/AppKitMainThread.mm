#import "platform/macos/appkit/AppKitMainThread.h"

#import <AppKit/AppKit.h>

#include "platform/macos/appkit/Callout.h"
#import "platform/macos/appkit/EventLoop.h"
#import "platform/macos/foundation/Guarded.h"

// Asks the main thread's run loop to serve the queue, in each of the modes in which a window is on the screen.
@interface WickfieldMainReceiver : NSObject {
@public
    platform::posix::MainQueue* m_queue;
    NSArray* m_modes;
    int m_slices;  // of runNextEvent that are under way
}
- (void)wake;
@end

@implementation WickfieldMainReceiver

- (instancetype)init {
    self = [super init];
    if (self != nil) {
        m_modes = [[NSArray alloc]
            initWithObjects:NSDefaultRunLoopMode, NSModalPanelRunLoopMode, NSEventTrackingRunLoopMode, nil];
    }
    return self;
}

- (void)dealloc {
    [m_modes release];
    [super dealloc];
}

- (void)wake {
    [self performSelectorOnMainThread:@selector(serve) withObject:nil waitUntilDone:NO modes:m_modes];
}

- (void)serve {
    if (m_queue == nullptr) {
        return;
    }
    if (m_queue->waiting() > 1) {
        // The first may run a nested loop, which the calls that are due behind this one would not reach.
        [self wake];
    }
    auto* const queue = m_queue;
    platform::macos::callOut([queue] { queue->serve(); });
    if (m_slices > 0) {
        // Lets the wait for an event end, too.
        platform::macos::wakeEventLoop();
    }
}

@end

namespace platform::macos {

AppKitMainThread::AppKitMainThread() : AppKitMainThread([[WickfieldMainReceiver alloc] init]) {}

AppKitMainThread::AppKitMainThread(WickfieldMainReceiver* receiver)
    : MainQueue([receiver] { guarded("waking the main thread", [receiver] { [receiver wake]; }); }),
      m_receiver(receiver) {
    receiver->m_queue = this;
}

AppKitMainThread::~AppKitMainThread() {
    m_receiver->m_queue = nullptr;  // a call that is due keeps the receiver
    [m_receiver release];
}

void AppKitMainThread::runNextEvent(std::chrono::milliseconds slice) {
    auto* const receiver = m_receiver;
    ++receiver->m_slices;
    guarded("the event loop", [slice] {
        NSDate* const end = [NSDate dateWithTimeIntervalSinceNow:std::chrono::duration<double>(slice).count()];
        NSEvent* const event = [NSApp nextEventMatchingMask:NSEventMaskAny
                                                  untilDate:end
                                                     inMode:NSModalPanelRunLoopMode
                                                    dequeue:YES];
        if (event != nil) {
            [NSApp sendEvent:event];
        }
    });
    --receiver->m_slices;
}

}  // namespace platform::macos
