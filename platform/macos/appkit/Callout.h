// Work of C++ that AppKit starts.
#pragma once

#include <functional>

namespace platform::macos {

// Runs the work; none is nothing to do. An exception that leaves it ends the program, as nothing of Objective-C's could
// catch it: by std::terminate, with one of Objective-C's as a std::runtime_error that holds its reason, so that whoever
// logs such ends can tell it.
void callOut(const std::function<void()>& work) noexcept;
void callOut(const std::function<void(long)>& work, long value) noexcept;

}  // namespace platform::macos
