// Running a command-line tool and waiting for it.
//
// Any thread. Nothing is thrown. A tool runs in a process group of its own, with an empty input, and without any
// descriptor of this process but its streams. The launch path is absolute; a tool that this host keeps elsewhere is
// found there.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/ports/Processes.h"

enum class LogOutput { no, yes };  // capture standard output; nothing is written to the log
enum class LogError { no, yes };   // capture standard error; nothing is written to the log
enum class StringEncoding : unsigned { ascii = 1, utf8 = 4, isoLatin1 = 5 };

// A tool that does not exist, is not executable or is a package is refused: "Error: %@ is not executable" is logged and
// printed. One that cannot be started all the same, a script without its interpreter for instance, gives "Exception
// running task %@: %@".
//
// Time-outs are whole seconds, truncated towards zero; 0.9 ends the tool right after its launch. They are carried out
// on the main thread, so a main thread that is busy elsewhere delays them; a timed run on the main thread serves it
// meanwhile. The tool and its subtasks are asked to terminate, and killed when they are still there 5 seconds later.
// All time-outs share one thread.
class KZTaskEx {
public:
    using Arguments = std::vector<std::string>;
    using Environment = std::map<std::string, std::string>;
    using Seconds = std::chrono::duration<double>;

    // Receives the process object of a run before the launch, so that another thread can end the tool. Keeps it until
    // it is set again. Any thread.
    class TaskRef {
    public:
        void set(std::shared_ptr<platform::Process> process);
        std::shared_ptr<platform::Process> get() const;

    private:
        mutable std::mutex m_mutex;
        std::shared_ptr<platform::Process> m_process;
    };

    // Run only; what the tool prints is dropped. True when it was started and has ended, whatever its exit status. A
    // path that does not begin with "/" is started without the check, from the working directory; one that cannot be
    // started is logged and not printed.
    static bool runTask(const std::string& launchPath, const Arguments& arguments);
    static bool runTask(const std::string& launchPath, const Arguments& arguments, TaskRef* task);

    // Waits until the tool ends by itself: the time-out never ends it. A caller who needs that uses
    // terminationCodeFromTask.
    static void runTask(const std::string& launchPath, const Arguments& arguments, Seconds timeout);

    // Starts the tool and returns without waiting for it.
    static void runTaskAndReturn(const std::string& launchPath, const Arguments& arguments);

    // What dataFromTask gives, as UTF-8 text. Empty when there is none or nothing was printed; none when it is not text
    // in that encoding, so a tool that may print other than ASCII wants an encoding.
    static std::optional<std::string> stringFromTask(const std::string& launchPath, const Arguments& arguments);
    static std::optional<std::string> stringFromTask(const std::string& launchPath, const Arguments& arguments,
                                                     TaskRef* task);
    static std::optional<std::string> stringFromTask(const std::string& launchPath, const Arguments& arguments,
                                                     StringEncoding encoding, TaskRef* task);
    static std::optional<std::string> stringFromTask(const std::string& launchPath, const Arguments& arguments,
                                                     Seconds timeout);
    static std::optional<std::string> stringFromTask(const std::string& launchPath, const Arguments& arguments,
                                                     StringEncoding encoding, Seconds timeout);
    static std::optional<std::string> stringFromTask(const std::string& launchPath, const Arguments& arguments,
                                                     StringEncoding encoding, Seconds timeout, LogOutput logOutput,
                                                     LogError logError);

    // What the tool prints until its streams end: the standard output, or the standard error when there is no output.
    // None when the tool is refused or cannot be started. Both streams are drained at once, so neither stalls the tool.
    // An output that is not captured is this process's own, an error that is not captured is dropped; with neither the
    // tool is started and not waited for. The environment replaces the whole environment of the tool.
    //
    // With a time-out, what was read until the tool ended is returned, also when a subtask keeps a stream open.
    static std::optional<std::string> dataFromTask(const std::string& launchPath, const Arguments& arguments,
                                                   TaskRef* task);
    static std::optional<std::string> dataFromTask(const std::string& launchPath, const Arguments& arguments,
                                                   TaskRef* task, const std::optional<Environment>& environment);
    static std::optional<std::string> dataFromTask(const std::string& launchPath, const Arguments& arguments,
                                                   TaskRef* task, const std::optional<Environment>& environment,
                                                   LogOutput logOutput);
    static std::optional<std::string> dataFromTask(const std::string& launchPath, const Arguments& arguments,
                                                   TaskRef* task, const std::optional<Environment>& environment,
                                                   LogOutput logOutput, LogError logError);
    static std::optional<std::string> dataFromTask(const std::string& launchPath, const Arguments& arguments,
                                                   Seconds timeout);
    static std::optional<std::string> dataFromTask(const std::string& launchPath, const Arguments& arguments,
                                                   Seconds timeout, LogOutput logOutput, LogError logError);

    // The exit status, or the number of the signal that ended the tool; what the tool prints is dropped. -1 when the
    // tool is refused or cannot be started. Here a file that exists passes the check; without the right to execute it
    // the start fails.
    static std::int32_t terminationCodeFromTask(const std::string& launchPath, const Arguments& arguments);
    static std::int32_t terminationCodeFromTask(const std::string& launchPath, const Arguments& arguments,
                                                TaskRef* task);
    static std::int32_t terminationCodeFromTask(const std::string& launchPath, const Arguments& arguments,
                                                Seconds timeout);
};
