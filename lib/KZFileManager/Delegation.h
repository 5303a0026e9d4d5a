// Questions to delegates that are answered on other threads.
#pragma once

#include <atomic>
#include <exception>
#include <functional>
#include <memory>

#include "lib/KZException.h"

namespace KZFileManager {

// Set by an answer, looked at by the loop that asked. Shared, since the answer may come when the loop has ended.
using CancelFlag = std::shared_ptr<std::atomic<bool>>;

// Calls a delegate; what it throws is logged under the method's name and goes no further.
template <typename Call>
void callDelegate(const char* method, const Call& call) {
    try {
        call();
    } catch (const std::exception& exception) {
        KZException::logException({.name = "std::exception", .reason = exception.what()}, method);
    } catch (...) {
        KZException::logException({.name = "unknown", .reason = "unknown exception"}, method);
    }
}

// Hands the call to a background thread and returns at once; what the call holds is kept until it is done.
void performInBackground(const char* method, std::function<void()> call);

// The same for a question whose answer no sets the flag.
void askInBackground(const char* method, const CancelFlag& cancelled, std::function<bool()> question);

}  // namespace KZFileManager
