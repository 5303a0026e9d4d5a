// Running a tool as a child process. Any thread; nothing throws.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ports/Error.h"

namespace platform {

struct ProcessOptions {
    enum class Input { null, pipe };  // pipe: an open, empty input
    enum class Output { inherit, null, pipe };

    std::string path;
    std::vector<std::string> arguments;                             // without the tool's own name
    std::optional<std::map<std::string, std::string>> environment;  // replaces the whole environment; none keeps it
    Input input = Input::null;
    Output output = Output::null;
    Output error = Output::null;
};

// One run of one tool. The tool gets a process group of its own, default signal dispositions, an empty signal mask and
// no descriptor but its three streams. All operations are safe from several threads at once. An object that is let go
// while its tool runs leaves the tool running; the host reaps it.
class Process {
public:
    virtual ~Process() = default;

    virtual const ProcessOptions& options() const = 0;

    // At most once. A tool that cannot be executed is a failure here, not an exit status.
    virtual Failure launch() = 0;

    virtual bool isRunning() = 0;  // false before the launch too
    virtual void waitUntilExit() = 0;
    // For how long at the most; true when the tool has ended.
    virtual bool waitUntilExit(std::chrono::milliseconds limit) = 0;

    // The exit code, or the number of the signal that ended the tool; 0 before it has ended, -1 when the host does not
    // know any more.
    virtual int terminationStatus() = 0;
    virtual bool endedBySignal() = 0;

    // Ask the tool and its subtasks to end, and make them end. Without effect once the tool has ended, except that a
    // tool which was asked can be followed by kill for the subtasks that stayed. Never sent to a process that merely
    // got the same number.
    virtual void terminate() = 0;
    virtual void kill() = 0;

    enum class Chunk { output, error, endOfStreams, timedOut };
    // Waits until one of the piped streams has something, reads what is there and appends it to the buffer named by the
    // answer. endOfStreams: every piped stream has ended. The limit none waits for ever.
    virtual Chunk readAvailable(std::string& output, std::string& error,
                                std::optional<std::chrono::milliseconds> limit) = 0;
    // Without waiting: a thread that is in readAvailable gets endOfStreams soon after.
    virtual void closeReadEnds() = 0;
};

class Processes {
public:
    virtual ~Processes() = default;

    virtual std::shared_ptr<Process> make(ProcessOptions options) = 0;

    // Where this host keeps a tool that the system names by its usual path; the path itself when it is kept there.
    virtual std::string locateTool(const std::string& path) = 0;
};

}  // namespace platform
