// poll with a point in time instead of a duration.
#pragma once

#include <poll.h>

#include <chrono>
#include <span>

namespace platform::posix {

// Waits until one of the descriptors is ready, whatever signals arrive meanwhile, and returns how many are; 0 when the
// time has come, negative on an error. A deadline at the clock's maximum waits for ever.
int pollUntil(std::span<pollfd> descriptors, std::chrono::steady_clock::time_point deadline);

// The point in time that lies so far ahead; the clock's maximum when it cannot express it.
std::chrono::steady_clock::time_point deadlineAfter(std::chrono::milliseconds limit);

}  // namespace platform::posix
