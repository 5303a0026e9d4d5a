// Holding off until another program has finished with a file, and making an application known.
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace KZFileManager {

// Makes the application bundle known under its identifier, again after it has changed or moved: from then on it can be
// found and opened by that identifier. False for what is no application bundle, or has no identifier that is safe to
// use. Nothing is logged.
bool registerApplicationWithLaunchServices(const std::string& path);

// One look, not a wait: returns at once when the file is there and has contents, or when the time-out is 0 or less;
// otherwise logs that it is waiting and returns after half a millisecond, whatever became of the file. Whoever needs to
// wait longer calls it again and again.
void waitForFileCreation(const std::string& path, std::chrono::seconds timeout);

// Blocks until the file has not been modified for 5 seconds, looking every half millisecond, and logs when that starts
// and ends. Returns at once, without a log line, for a file that is that old already, unless the lock file exists then;
// whether the lock file goes later plays no part. There is no time-out: a file that is missing, or dated in the future,
// is waited for as long as that lasts. No events are served meanwhile, so it is for other threads than the main one.
void waitForFileWrites(const std::string& path);
void waitForFileWrites(const std::string& path, const std::optional<std::string>& lockFile);

// Whether any process that may be looked at has the file open for writing, as the host's tool for that says; waits for
// it, at most 3 seconds. False when the tool is missing or says nothing in time. Every word of its answer counts, a
// complaint too when that is all it says: one that holds a "w" or a "u" anywhere makes it true.
bool fileIsOpenForWriting(const std::string& path);

}  // namespace KZFileManager
