// Where the log files lie and how a new one is begun; for KZLog alone.
//
// At most five logs are kept, named after the application: NAME.1.log, the current one, to NAME.5.log, the oldest, in
// the folder Logs/Corvane of the user's Library. For the superuser the current log lies in the machine-wide Library
// instead, but the folder that is made and whose files are shifted stays the user's.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace KZLogFiles {

inline constexpr int mostLogs = 5;

// Each is none when the host has no such folder: for the superuser's user folders while nobody is at the console.
struct Places {
    std::optional<std::string> preferencesFile;  // the maker's global one
    std::optional<std::string> folder;
    std::optional<std::string> currentFolder;  // the one of the current log
};
Places places();

std::string logPath(const std::string& folder, const std::string& appName, int number);

// The key "disable-logging" is the string "1" or a number equal to 1.
bool isDisabledByPreferences(const Places& places);

// Shifts the logs down and makes an empty current one. False when a step failed; the line that says so has then been
// handed to `print`, its line break included, and the steps after it are not taken. Blocks; nothing is ever replaced
// save the current log.
using Print = std::function<void(const std::string&)>;
bool startNewLog(const Places& places, const std::string& appName, const Print& print);

struct HeaderLine {
    std::string text;
    bool fast = true;  // false: queued by an operation that may wait for the queue
};
std::vector<HeaderLine> header();

}  // namespace KZLogFiles
