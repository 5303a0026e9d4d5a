// The central form of each kind of run: with a time-out, or without one when `timed` is null.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "lib/KZTaskEx.h"

namespace kz {

class TimedRun;

struct TaskRequest {
    const std::string& launchPath;
    const KZTaskEx::Arguments& arguments;
    KZTaskEx::TaskRef* task = nullptr;  // may be null
    TimedRun* timed = nullptr;
};

struct Capture {
    LogOutput output = LogOutput::yes;
    LogError error = LogError::yes;
};

bool run(const TaskRequest& request);
void runAndReturn(const TaskRequest& request);
std::int32_t terminationCode(const TaskRequest& request);
std::optional<std::string> captureData(const TaskRequest& request,
                                       const std::optional<KZTaskEx::Environment>& environment, Capture capture);

}  // namespace kz
