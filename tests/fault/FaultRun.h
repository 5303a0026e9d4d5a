#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace fault {

struct Fault {
    int at = 0;     // which call, counted from 1; 0: none
    int error = 0;  // 0: the process is killed there
};

struct Outcome {
    bool reached = false;  // the call that was to fail was made
    bool killed = false;
    int status = 0;  // exit code
    std::string call;
};

// Runs the driver with these words and waits for it.
Outcome run(const std::vector<std::string>& words, const Fault& fault);

// What is checked: `prepare` lays out a fresh scene and gives the driver's words, `check` looks at the scene after the
// faulty run, then after a second one without a fault.
struct Scenario {
    std::function<std::vector<std::string>()> prepare;
    std::function<void(const Outcome&)> check;
    std::function<void(const Outcome& faulty, const Outcome& second)> checkSecond;
};

// One run for each call that the operation makes, for each error and for a kill; stops at the first that fails. The
// number of faults that were reached.
int runEveryFault(const Scenario& scenario);

// Why faults cannot be injected into this build; none when they can.
std::optional<std::string> obstacle();

}  // namespace fault
