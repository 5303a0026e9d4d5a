#pragma once

#include <string>

namespace platform::macos {

// Makes Launch Services look at the application bundle, again too; its status, 0 when it is known now. Any thread.
int registerWithLaunchServices(const std::string& bundlePath);

}  // namespace platform::macos
