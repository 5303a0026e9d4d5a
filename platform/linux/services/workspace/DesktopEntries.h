// Applications as the desktop knows them: desktop entries in the XDG data folders.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::linux_host {

struct DesktopEntry {
    std::string path;  // of the entry itself
    std::string name;
    std::string icon;
    std::string exec;
};

// The application entry in the text of a desktop file; none when it is malformed, hidden or not an application.
std::optional<DesktopEntry> parseDesktopEntry(std::string_view text);

// The entry named after the identifier in the first data folder that has it; a hidden one there counts as removed.
std::optional<DesktopEntry> findDesktopEntry(const std::string& identifier,
                                             const std::vector<std::string>& dataFolders);

// The command line of the entry with the addresses put in where it wants them, those of local files as paths where it
// wants files; where it takes one only, the first. A quoting that does not end gives an empty list.
std::vector<std::string> commandLine(const DesktopEntry& entry, const std::vector<std::string>& urls);

}  // namespace platform::linux_host
