#include "lib/KZTaskEx/Runs.h"

#include <chrono>
#include <exception>
#include <utility>

#include "lib/KZLog.h"
#include "lib/KZTaskEx/TimedRun.h"
#include "platform/ports/Host.h"

namespace kz {

namespace {

using platform::ProcessOptions;

// A tool whose streams have ended is about to end, too.
constexpr std::chrono::milliseconds timeToLeave{10};

std::string locate(const std::string& launchPath) { return platform::host().processes->locateTool(launchPath); }

bool isPackage(const std::string& tool) { return platform::host().workspace->isFilePackage(tool); }

bool isExecutable(const std::string& tool) { return platform::host().files->isExecutable(tool) && !isPackage(tool); }

bool isExecutableOrThere(const std::string& tool) {
    auto& files = *platform::host().files;
    return (files.isExecutable(tool) || files.fileExists(tool)) && !isPackage(tool);
}

void refuse(const std::string& launchPath) { KZLog::appendLogAndPrint("Error: %@ is not executable", launchPath); }

void reportException(const std::string& launchPath, const std::string& reason) {
    KZLog::appendLogAndPrint("Exception running task %@: %@", launchPath, reason);
}

std::shared_ptr<platform::Process> makeTask(const TaskRequest& request, ProcessOptions options) {
    options.arguments = request.arguments;
    auto task = platform::host().processes->make(std::move(options));
    if (request.task != nullptr) {
        request.task->set(task);
    }
    return task;
}

std::shared_ptr<platform::Process> makeSilentTask(const TaskRequest& request, std::string tool) {
    ProcessOptions options;
    options.path = std::move(tool);
    return makeTask(request, std::move(options));
}

platform::Failure launch(platform::Process& task, const TaskRequest& request) {
    auto failure = task.launch();
    if (!failure && request.timed != nullptr) {
        request.timed->launched();
    }
    return failure;
}

void waitUntilExit(platform::Process& task, const TaskRequest& request) {
    if (request.timed != nullptr) {
        request.timed->waitUntilExit(task);
    } else {
        task.waitUntilExit();
    }
}

void readToEnd(platform::Process& task, const TaskRequest& request, std::string& output, std::string& error) {
    if (request.timed != nullptr) {
        request.timed->readToEnd(task, output, error);
        return;
    }
    while (task.readAvailable(output, error, std::nullopt) != platform::Process::Chunk::endOfStreams) {
    }
}

}  // namespace

bool run(const TaskRequest& request) {
    std::string tool = locate(request.launchPath);
    if (request.launchPath.starts_with('/') && !isExecutable(tool)) {
        refuse(request.launchPath);
        return false;
    }
    const auto task = makeSilentTask(request, std::move(tool));
    if (const auto failure = launch(*task, request)) {
        KZLog::appendLog("Exception running task %@: %@", request.launchPath, failure->description);
        return false;
    }
    waitUntilExit(*task, request);
    return true;
}

void runAndReturn(const TaskRequest& request) {
    std::string tool = locate(request.launchPath);
    if (!isExecutableOrThere(tool)) {
        refuse(request.launchPath);
        return;
    }
    if (const auto failure = launch(*makeSilentTask(request, std::move(tool)), request)) {
        reportException(request.launchPath, failure->description);
    }
}

std::int32_t terminationCode(const TaskRequest& request) {
    std::string tool = locate(request.launchPath);
    if (!isExecutableOrThere(tool)) {
        refuse(request.launchPath);
        return -1;
    }
    const auto task = makeSilentTask(request, std::move(tool));
    if (const auto failure = launch(*task, request)) {
        reportException(request.launchPath, failure->description);
        return -1;
    }
    waitUntilExit(*task, request);
    return task->terminationStatus();
}

std::optional<std::string> captureData(const TaskRequest& request,
                                       const std::optional<KZTaskEx::Environment>& environment, Capture capture) {
    using Output = ProcessOptions::Output;
    ProcessOptions options;
    options.path = locate(request.launchPath);
    if (!isExecutable(options.path)) {
        refuse(request.launchPath);
        return std::nullopt;
    }
    options.environment = environment;
    options.input = ProcessOptions::Input::pipe;
    options.output = capture.output == LogOutput::yes ? Output::pipe : Output::inherit;
    options.error = capture.error == LogError::yes ? Output::pipe : Output::null;
    const bool anything = options.output == Output::pipe || options.error == Output::pipe;
    const auto task = makeTask(request, std::move(options));
    if (const auto failure = launch(*task, request)) {
        reportException(request.launchPath, failure->description);
        return std::nullopt;
    }
    try {
        std::string output;
        std::string error;
        readToEnd(*task, request, output, error);
        task->closeReadEnds();
        if (anything) {
            task->waitUntilExit(timeToLeave);
        }
        return output.empty() ? std::move(error) : std::move(output);
    } catch (const std::exception& exception) {  // more output than memory
        task->closeReadEnds();
        reportException(request.launchPath, exception.what());
        return std::nullopt;
    }
}

}  // namespace kz
