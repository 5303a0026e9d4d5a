#include "platform/macos/appkit/Callout.h"

#import <Foundation/Foundation.h>

#include <stdexcept>

#import "platform/macos/foundation/Text.h"

namespace platform::macos {

namespace {

template <typename Work>
void run(const Work& work) {
    @try {
        work();
    } @catch (NSException* exception) {
        throw std::runtime_error(fromNS([exception reason]));
    }
}

}  // namespace

void callOut(const std::function<void()>& work) noexcept {
    if (work) {
        run(work);
    }
}

void callOut(const std::function<void(long)>& work, long value) noexcept {
    if (work) {
        run([&work, value] { work(value); });
    }
}

}  // namespace platform::macos
