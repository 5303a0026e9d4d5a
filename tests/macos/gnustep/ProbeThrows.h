// What the probe throws on purpose, through each way from Objective-C to C++ and back.
#pragma once

#include <string>

#include "platform/ports/ApplicationMain.h"

namespace probe {

// An exception of C++: work (handed to the main thread), action (of a button), end (of a sheet) or observer (of the end
// of the application). An exception of Objective-C: raise (within C++ work of a button), event (from the event loop
// that waits for an answer) or thread (with nobody on the way who catches it). False for a way that there is none of.
bool throwThrough(const std::string& way, const platform::Outlets& outlets);

}  // namespace probe
