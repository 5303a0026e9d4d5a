#pragma once

#include <chrono>

namespace platform {

using Date = std::chrono::system_clock::time_point;

}  // namespace platform
