// Running a command-line tool: waiting for it, or in the background with its output as it comes.
//
// Any thread. Nothing is thrown. A tool runs in a process group of its own, with an empty input, and without any
// descriptor of this process but its streams. The launch path is absolute; a tool that this host keeps elsewhere is
// found there.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/ports/Processes.h"

namespace kz {
class AsyncRun;
}

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

    // An instance runs one tool at a time in the background. Nothing of a run uses the instance after it is gone.
    KZTaskEx() = default;
    ~KZTaskEx();  // ends the run as terminateTask does
    KZTaskEx(const KZTaskEx&) = delete;
    KZTaskEx& operator=(const KZTaskEx&) = delete;

    using AsyncObject = std::shared_ptr<void>;  // the caller's context, none or kept until the run has ended
    using AsyncCallback = std::function<void(const std::string& data, KZTaskEx& task, const AsyncObject& object)>;
    template <typename Delegate>
    using AsyncSelector = void (Delegate::*)(const std::string& data, KZTaskEx& task, const AsyncObject& object);

    // Starts the tool and returns at once. The delegate's member gets each piece of the standard output as it comes and
    // an empty one when the output has ended, on a thread of the run's own; it holds up the tool while it works. With
    // no delegate or no member the output is dropped. What the tool prints as error is dropped, its input is empty.
    // Nothing is called for a tool that is missing or cannot be started: the log says so, and theTask and the delegate
    // stay as they are until terminateTask.
    //
    // After the empty piece the tool is asked to terminate if it is still there a moment later: one that closes its
    // output and works on is cut short. So is the tool of a callback that throws, which is logged. A run that is under
    // way is ended first; a callback may start the next.
    template <typename Delegate>
    void asyncDataFromTask(const std::string& launchPath, const Arguments& arguments, Delegate* delegate,
                           std::type_identity_t<AsyncSelector<Delegate>> selector, const AsyncObject& object,
                           const std::optional<Environment>& environment = std::nullopt) {
        AsyncCallback callback;
        if (delegate != nullptr && selector != nullptr) {
            callback = [delegate, selector](const std::string& data, KZTaskEx& task, const AsyncObject& context) {
                (delegate->*selector)(data, task, context);
            };
        }
        startAsync({launchPath, arguments, environment}, delegate, std::move(callback), object);
    }

    // Ends the run early, also from within the callback: closes the output, forgets the delegate and asks the tool and
    // its subtasks to terminate, without waiting for them. When it returns, no callback is under way but the one that
    // it is called from, and none will come: the delegate may go. So it waits for a callback on another thread, for
    // which the main thread serves its events; hold no lock that the callback wants.
    void terminateTask();
    void terminateAsyncTask();

    std::shared_ptr<platform::Process> theTask() const;  // none before the first run and once a run has ended
    const void* delegate() const;                        // none once the run has ended
    bool respondsToSelector() const;                     // whether there is anybody to call
    AsyncObject object() const;

    // What carries a piece of output to asyncTaskReturnData.
    struct AsyncNotification {
        std::string name = "KZAsyncTaskDataNotification";
        const void* sender = nullptr;
        std::map<std::string, std::string> userInfo;  // the data under notificationDataItem
    };
    static constexpr const char* notificationDataItem = "NSFileHandleNotificationDataItem";

    // The steps of a run, on its thread. Not for callers.
    void launchAsyncTask();
    void asyncTaskReturnData(const AsyncNotification& notification);

private:
    struct AsyncTool {
        const std::string& launchPath;
        const Arguments& arguments;
        const std::optional<Environment>& environment;
    };
    void startAsync(const AsyncTool& tool, const void* delegate, AsyncCallback selector, AsyncObject object);
    std::shared_ptr<kz::AsyncRun> currentRun() const;

    mutable std::mutex m_runMutex;
    std::shared_ptr<kz::AsyncRun> m_run;
};
