// Copying one small file without starting a tool for it.
#pragma once

#include <string>
#include <vector>

namespace platform::rights {

// Does what "/bin/cp -f -p -R SOURCE DESTINATION" does for a regular file of at most 1 MiB to a name that nothing
// stands under yet, and takes a tenth of the time that cp needs to start. Both folders are walked to (see PathWalk.h)
// and held, so nobody can lead the copy astray; it appears complete, with its mode, owner and times, or not at all.
//
// False: the command is another one, or something is not quite as plain as that (a link, holes, an access control list,
// a file system without files that have no name yet, any error). Nothing has been done then, and the tool is to decide.
bool copiesSmallFile(const std::vector<std::string>& command);

}  // namespace platform::rights
