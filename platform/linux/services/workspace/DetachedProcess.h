// Starting a program that goes its own way.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace platform::linux_host {

// Where the shell would find a program: the path itself when it holds a "/", else the first hit of $PATH.
std::optional<std::string> findProgram(const std::string& name);

// Starts the program (first word, as findProgram takes it) in a session of its own, with null streams and no other
// descriptor, and returns without waiting for it to end; it is nobody's child here. False when it could not be started.
bool startDetached(const std::vector<std::string>& command);

}  // namespace platform::linux_host
