#pragma once

#include <string>

namespace fault {

// Everything that a copy carries, of an item and all that lies in it, one line each, as text that two trees can be
// compared by. Empty when nothing is there.
std::string snapshot(const std::string& path);

}  // namespace fault
