#include "platform/posix/TerminateHandler.h"

#include <atomic>
#include <cstdlib>
#include <exception>

namespace platform::posix {

namespace {

std::atomic<UncaughtExceptions::Handler> currentHandler = nullptr;
std::atomic<TerminateHandler::IsOfTheHost> leftToTheHost = nullptr;
std::atomic<std::terminate_handler> previousTerminate = nullptr;

std::string reasonOfCurrentException() {
    const std::exception_ptr current = std::current_exception();
    if (!current) {
        return "terminate called without an active exception";
    }
    try {
        std::rethrow_exception(current);
    } catch (const std::exception& exception) {
        return exception.what();
    } catch (...) {
        return "unknown exception";
    }
}

[[noreturn]] void terminating() {
    static std::atomic_flag entered;
    const auto handler = currentHandler.load();
    const auto isOfTheHost = leftToTheHost.load();
    if (handler != nullptr && !(isOfTheHost != nullptr && isOfTheHost()) && !entered.test_and_set()) {
        handler(reasonOfCurrentException());
    }
    if (const auto previous = previousTerminate.load()) {
        previous();
    }
    std::abort();
}

}  // namespace

void TerminateHandler::setHandler(Handler handler) {
    currentHandler = handler;
    leftToTheHost = m_isOfTheHost;
    const std::terminate_handler previous = std::set_terminate(terminating);
    if (previous != terminating) {
        previousTerminate = previous;
    }
}

}  // namespace platform::posix
