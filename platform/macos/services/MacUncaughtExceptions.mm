#import "platform/macos/services/MacUncaughtExceptions.h"

#import <Foundation/Foundation.h>
#import <objc/runtime.h>

#include <cxxabi.h>
#include <atomic>
#include <typeinfo>

#import "platform/macos/foundation/Text.h"

namespace platform::macos {

namespace {

std::atomic<UncaughtExceptions::Handler> currentHandler = nullptr;

// C++ sees an object that was thrown as a value whose type bears the plain name of its class; the names that it gives
// to types of its own are no names of classes.
bool isOfObjectiveC() {
    const std::type_info* const type = abi::__cxa_current_exception_type();
    return type != nullptr && objc_lookUpClass(type->name()) != Nil;
}

void tell(NSException* exception) {
    @autoreleasepool {
        if (const auto handler = currentHandler.load()) {
            handler(fromNS([exception reason] != nil ? [exception reason] : [exception name]));
        }
    }
}

}  // namespace

// NOLINTNEXTLINE(bugprone-throw-keyword-missing): its name only sounds like an exception's
MacUncaughtExceptions::MacUncaughtExceptions() : m_ofCpp(isOfObjectiveC) {}

void MacUncaughtExceptions::setHandler(Handler handler) {
    currentHandler = handler;
    m_ofCpp.setHandler(handler);
    NSSetUncaughtExceptionHandler(tell);
}

}  // namespace platform::macos
