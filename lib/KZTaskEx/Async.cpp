#include <system_error>
#include <thread>
#include <utility>

#include "lib/KZException.h"
#include "lib/KZLog.h"
#include "lib/KZTaskEx.h"
#include "lib/KZTaskEx/AsyncRun.h"
#include "platform/ports/Host.h"

KZTaskEx::~KZTaskEx() { terminateAsyncTask(); }

void KZTaskEx::startAsync(const AsyncTool& wanted, const void* delegate, AsyncCallback selector, AsyncObject object) {
    platform::ProcessOptions options;
    auto& processes = *platform::host().processes;
    options.path = processes.locateTool(wanted.launchPath);
    options.arguments = wanted.arguments;
    options.environment = wanted.environment;
    options.output = platform::ProcessOptions::Output::pipe;
    std::string tool = options.path;
    auto run = std::make_shared<kz::AsyncRun>(
        *this, processes.make(std::move(options)), std::move(tool),
        kz::AsyncRun::Receiver{.delegate = delegate, .selector = std::move(selector), .object = std::move(object)});
    auto previous = run;
    {
        const std::lock_guard lock(m_runMutex);
        m_run.swap(previous);
    }
    if (previous) {
        previous->terminate();
    }
    try {
        std::thread([run] { run->launch(); }).detach();
    } catch (const std::system_error& error) {
        KZException::logException({"NSThreadException", error.what()}, "-[KZTaskEx launchAsyncTask]");
        run->terminate();
    }
}

void KZTaskEx::launchAsyncTask() {
    if (const auto run = currentRun()) {
        run->launch();
    } else {
        KZLog::appendLogAndPrint("Unable to launch async task - no task set");
    }
}

void KZTaskEx::asyncTaskReturnData(const AsyncNotification& notification) {
    if (const auto run = currentRun()) {
        run->returnData(notification);
    }
}

void KZTaskEx::terminateTask() { terminateAsyncTask(); }

void KZTaskEx::terminateAsyncTask() {
    if (const auto run = currentRun()) {
        run->terminate();
    }
}

std::shared_ptr<kz::AsyncRun> KZTaskEx::currentRun() const {
    const std::lock_guard lock(m_runMutex);
    return m_run;
}

std::shared_ptr<platform::Process> KZTaskEx::theTask() const {
    const auto run = currentRun();
    return run ? run->theTask() : nullptr;
}

const void* KZTaskEx::delegate() const {
    const auto run = currentRun();
    return run ? run->receiver().delegate : nullptr;
}

bool KZTaskEx::respondsToSelector() const {
    const auto run = currentRun();
    return run && run->receiver().selector;
}

KZTaskEx::AsyncObject KZTaskEx::object() const {
    const auto run = currentRun();
    return run ? run->receiver().object : nullptr;
}
