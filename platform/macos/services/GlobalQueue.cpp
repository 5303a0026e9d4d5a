#include "platform/macos/services/GlobalQueue.h"

#include <dispatch/dispatch.h>

#include <memory>
#include <utility>

namespace platform::macos {

namespace {

using Work = std::function<void()>;

void run(void* context) noexcept {
    const std::unique_ptr<Work> work(static_cast<Work*>(context));
    (*work)();
}

}  // namespace

void GlobalQueue::perform(std::function<void()> work) {
    auto owned = std::make_unique<Work>(std::move(work));
    dispatch_async_f(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0), owned.release(), run);
}

}  // namespace platform::macos
