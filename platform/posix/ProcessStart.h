#pragma once

namespace platform::posix {

// What a program with windows does before anything else. Standard streams that it was started without lead to nowhere,
// so that no file or connection takes their numbers and gets what is printed. SIGPIPE and SIGXFSZ are ignored: printing
// to a reader that is gone, and writing a file larger than the process may, fails instead of ending the process
// half-way through its work. Children do not inherit that.
void prepareProcess();

}  // namespace platform::posix
