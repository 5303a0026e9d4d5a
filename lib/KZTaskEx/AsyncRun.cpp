#include "lib/KZTaskEx/AsyncRun.h"

#include <chrono>
#include <exception>
#include <utility>

#include "lib/KZException.h"
#include "lib/KZLog.h"
#include "platform/ports/Host.h"

namespace kz {

namespace {

constexpr std::chrono::milliseconds slice{10};  // of the main thread's events
// A tool whose output has ended is about to end, too.
constexpr std::chrono::milliseconds timeToLeave{10};

void logException(const char* name, const std::string& reason) {
    KZException::logException({name, reason}, "-[KZTaskEx launchAsyncTask]");
}

// Never destroyed: a run may end while the program does, after its static objects have gone.
const std::shared_ptr<const AsyncRun::Receiver>& nobody() {
    static const auto* const shared =
        new std::shared_ptr<const AsyncRun::Receiver>(std::make_shared<const AsyncRun::Receiver>());
    return *shared;
}

}  // namespace

AsyncRun::AsyncRun(KZTaskEx& owner, std::shared_ptr<platform::Process> task, std::string launchPath, Receiver receiver)
    : m_owner(owner),
      m_launchPath(std::move(launchPath)),
      m_task(std::move(task)),
      m_receiver(std::make_shared<const Receiver>(std::move(receiver))) {}

std::shared_ptr<platform::Process> AsyncRun::theTask() const {
    const std::lock_guard lock(m_mutex);
    return m_task;
}

AsyncRun::Receiver AsyncRun::receiver() const {
    const std::lock_guard lock(m_mutex);
    return *m_receiver;
}

bool AsyncRun::isExecutable() const {
    auto& files = *platform::host().files;
    return files.fileExists(m_launchPath) && files.isExecutable(m_launchPath);
}

bool AsyncRun::start() {
    platform::Failure failure;
    {
        // With the lock held, so that a run is ended either before its tool is started or after.
        const std::lock_guard lock(m_mutex);
        if (!m_task) {
            return false;
        }
        failure = m_task->launch();
    }
    if (failure) {
        logException("NSInvalidArgumentException", failure->description);
        return false;
    }
    return true;
}

void AsyncRun::launch() {
    const auto task = theTask();
    if (!task) {
        KZLog::appendLogAndPrint("Unable to launch async task - no task set");
        return;
    }
    if (!isExecutable()) {
        KZLog::appendLog("Unable to launch async task - task does not exist or is not executable");
        return;
    }
    if (!start()) {
        return;
    }
    try {
        readToEnd(*task);
    } catch (const std::exception& exception) {
        logException("NSException", exception.what());
    } catch (...) {
        logException("NSException", "unknown");
    }
    terminate();
}

void AsyncRun::readToEnd(platform::Process& task) {
    KZTaskEx::AsyncNotification notification;
    std::string& chunk = notification.userInfo[KZTaskEx::notificationDataItem];  // its room serves every chunk
    std::string noError;
    while (task.readAvailable(chunk, noError, std::nullopt) == platform::Process::Chunk::output) {
        returnData(notification);
        chunk.clear();
    }
    task.waitUntilExit(timeToLeave);
    returnData(notification);
}

void AsyncRun::returnData(const KZTaskEx::AsyncNotification& notification) {
    const std::string nothing;
    const auto item = notification.userInfo.find(KZTaskEx::notificationDataItem);
    const std::string& chunk = item == notification.userInfo.end() ? nothing : item->second;
    {
        const std::lock_guard calling(m_calling);
        std::shared_ptr<const Receiver> receiver;
        {
            const std::lock_guard lock(m_mutex);
            receiver = m_receiver;
        }
        if (receiver->selector) {
            receiver->selector(chunk, m_owner, receiver->object);
        }
    }
    if (chunk.empty()) {
        terminate();
    }
}

void AsyncRun::terminate() {
    std::shared_ptr<platform::Process> task;
    auto receiver = nobody();  // what the former one owns goes after the lock
    {
        const std::lock_guard lock(m_mutex);
        m_receiver.swap(receiver);
        m_task.swap(task);
    }
    if (task) {
        task->closeReadEnds();
        if (task->isRunning()) {
            task->terminate();
        }
    }
    awaitCallback();
}

void AsyncRun::awaitCallback() {
    if (m_calling.try_lock()) {
        m_calling.unlock();
        return;
    }
    auto& mainThread = *platform::host().mainThread;
    if (!mainThread.isCurrent()) {
        const std::lock_guard lock(m_calling);
        return;
    }
    while (!m_calling.try_lock()) {
        mainThread.runNextEvent(slice);
    }
    m_calling.unlock();
}

}  // namespace kz
