// The file in which a desktop keeps where the user's Documents, Desktop and so on lie.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace platform::linux_host {

// The folders of a user-dirs.dirs file by their name there, for instance XDG_DOCUMENTS_DIR. A value is "$HOME/…" or an
// absolute path, in double quotes; trailing slashes are dropped. Lines of any other form count as absent, and so does a
// folder that is the home itself, which is how that file switches a folder off.
std::map<std::string, std::string> parseUserDirs(std::string_view text, const std::string& home);

}  // namespace platform::linux_host
