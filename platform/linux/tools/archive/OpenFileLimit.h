#pragma once

namespace platform::linux_host {

// As many open files as the process may have: an archiver holds every folder on the way to an item open.
void allowManyOpenFiles();

}  // namespace platform::linux_host
