// Making an application bundle known to the desktop.
#pragma once

#include <string>
#include <string_view>

#include "platform/ports/Error.h"

namespace platform::linux_host {

struct BundleApplication {
    std::string identifier;
    std::string name;
    std::string program;  // path
    std::string icon;     // path; may be empty
};

// The desktop entry that starts the application with the addresses that it is to open. Whatever the name and the paths
// hold comes back unchanged from a reader of such entries.
std::string applicationEntry(const BundleApplication& application);

// Whether a file may be named after it: letters, digits, "-", "_" and single dots between them.
bool isUsableIdentifier(std::string_view identifier);

// Writes the entry of the bundle "Name.app", named after its identifier, to the applications of the data folder, which
// is made when it is missing. It replaces one of the same identifier in one step, and leaves one alone that says the
// same already.
Failure writeApplicationEntry(const std::string& bundlePath, const std::string& dataFolder);

}  // namespace platform::linux_host
