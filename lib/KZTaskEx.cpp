#include "lib/KZTaskEx.h"

#include <utility>

#include "lib/KZTaskEx/Decoding.h"
#include "lib/KZTaskEx/Runs.h"
#include "lib/KZTaskEx/TimedRun.h"

namespace {

using Text = std::optional<std::string>;
using Data = std::optional<std::string>;

Text textFrom(Data data, StringEncoding encoding) {
    if (!data || data->empty()) {
        return "";
    }
    return kz::decode(*std::move(data), encoding);
}

}  // namespace

void KZTaskEx::TaskRef::set(std::shared_ptr<platform::Process> process) {
    const std::lock_guard lock(m_mutex);
    m_process.swap(process);
}

std::shared_ptr<platform::Process> KZTaskEx::TaskRef::get() const {
    const std::lock_guard lock(m_mutex);
    return m_process;
}

bool KZTaskEx::runTask(const std::string& launchPath, const Arguments& arguments) {
    return runTask(launchPath, arguments, nullptr);
}

bool KZTaskEx::runTask(const std::string& launchPath, const Arguments& arguments, TaskRef* task) {
    return kz::run({launchPath, arguments, task});
}

void KZTaskEx::runTask(const std::string& launchPath, const Arguments& arguments, Seconds timeout) {
    kz::TimedRun timed(launchPath, timeout);
    TaskRef own;  // not where the time-out looks, so it finds no task
    kz::run({launchPath, arguments, &own, &timed});
}

void KZTaskEx::runTaskAndReturn(const std::string& launchPath, const Arguments& arguments) {
    kz::runAndReturn({launchPath, arguments});
}

Text KZTaskEx::stringFromTask(const std::string& launchPath, const Arguments& arguments) {
    return stringFromTask(launchPath, arguments, nullptr);
}

Text KZTaskEx::stringFromTask(const std::string& launchPath, const Arguments& arguments, TaskRef* task) {
    return stringFromTask(launchPath, arguments, StringEncoding::ascii, task);
}

Text KZTaskEx::stringFromTask(const std::string& launchPath, const Arguments& arguments, StringEncoding encoding,
                              TaskRef* task) {
    return textFrom(dataFromTask(launchPath, arguments, task), encoding);
}

Text KZTaskEx::stringFromTask(const std::string& launchPath, const Arguments& arguments, Seconds timeout) {
    return stringFromTask(launchPath, arguments, StringEncoding::ascii, timeout);
}

Text KZTaskEx::stringFromTask(const std::string& launchPath, const Arguments& arguments, StringEncoding encoding,
                              Seconds timeout) {
    return textFrom(dataFromTask(launchPath, arguments, timeout), encoding);
}

Text KZTaskEx::stringFromTask(const std::string& launchPath, const Arguments& arguments, StringEncoding encoding,
                              Seconds timeout, LogOutput logOutput, LogError logError) {
    return textFrom(dataFromTask(launchPath, arguments, timeout, logOutput, logError), encoding);
}

Data KZTaskEx::dataFromTask(const std::string& launchPath, const Arguments& arguments, TaskRef* task) {
    return dataFromTask(launchPath, arguments, task, std::nullopt);
}

Data KZTaskEx::dataFromTask(const std::string& launchPath, const Arguments& arguments, TaskRef* task,
                            const std::optional<Environment>& environment) {
    return dataFromTask(launchPath, arguments, task, environment, LogOutput::yes);
}

Data KZTaskEx::dataFromTask(const std::string& launchPath, const Arguments& arguments, TaskRef* task,
                            const std::optional<Environment>& environment, LogOutput logOutput) {
    return dataFromTask(launchPath, arguments, task, environment, logOutput, LogError::yes);
}

Data KZTaskEx::dataFromTask(const std::string& launchPath, const Arguments& arguments, TaskRef* task,
                            const std::optional<Environment>& environment, LogOutput logOutput, LogError logError) {
    return kz::captureData({launchPath, arguments, task}, environment, {logOutput, logError});
}

Data KZTaskEx::dataFromTask(const std::string& launchPath, const Arguments& arguments, Seconds timeout) {
    return dataFromTask(launchPath, arguments, timeout, LogOutput::yes, LogError::yes);
}

Data KZTaskEx::dataFromTask(const std::string& launchPath, const Arguments& arguments, Seconds timeout,
                            LogOutput logOutput, LogError logError) {
    kz::TimedRun timed(launchPath, timeout);
    return kz::captureData({launchPath, arguments, timed.theTask(), &timed}, std::nullopt, {logOutput, logError});
}

std::int32_t KZTaskEx::terminationCodeFromTask(const std::string& launchPath, const Arguments& arguments) {
    return terminationCodeFromTask(launchPath, arguments, nullptr);
}

std::int32_t KZTaskEx::terminationCodeFromTask(const std::string& launchPath, const Arguments& arguments,
                                               TaskRef* task) {
    return kz::terminationCode({launchPath, arguments, task});
}

std::int32_t KZTaskEx::terminationCodeFromTask(const std::string& launchPath, const Arguments& arguments,
                                               Seconds timeout) {
    kz::TimedRun timed(launchPath, timeout);
    return kz::terminationCode({launchPath, arguments, timed.theTask(), &timed});
}
