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

enum class LogOutput { no, yes };  // capture standard output
enum class LogError { no, yes };   // capture standard error
enum class StringEncoding : unsigned { ascii = 1, utf8 = 4, isoLatin1 = 5 };

class KZTaskEx {
public:
    using Arguments = std::vector<std::string>;
    using Environment = std::map<std::string, std::string>;
    using Seconds = std::chrono::duration<double>;

    // Receives the process object of a run as soon as it exists, so that another thread can end it.
    class TaskRef {
    public:
        void set(std::shared_ptr<platform::Process> process);
        std::shared_ptr<platform::Process> get() const;

    private:
        mutable std::mutex m_mutex;
        std::shared_ptr<platform::Process> m_process;
    };

    static bool runTask(const std::string& launchPath, const Arguments& arguments);
    static bool runTask(const std::string& launchPath, const Arguments& arguments, TaskRef* task);
    static void runTask(const std::string& launchPath, const Arguments& arguments, Seconds timeout);
    static void runTaskAndReturn(const std::string& launchPath, const Arguments& arguments);

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

    static std::int32_t terminationCodeFromTask(const std::string& launchPath, const Arguments& arguments);
    static std::int32_t terminationCodeFromTask(const std::string& launchPath, const Arguments& arguments,
                                                TaskRef* task);
    static std::int32_t terminationCodeFromTask(const std::string& launchPath, const Arguments& arguments,
                                                Seconds timeout);
};
