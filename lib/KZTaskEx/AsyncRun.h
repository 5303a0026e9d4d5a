// One run of a tool in the background.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "lib/KZTaskEx.h"

namespace kz {

// Shared by the runner that started it and the thread that reads, so that either may be gone first. A call of the
// delegate and the end of the run exclude each other: once the run has ended, no call is under way or still to come.
class AsyncRun {
public:
    struct Receiver {
        const void* delegate = nullptr;
        KZTaskEx::AsyncCallback selector;  // empty when there is nobody to call
        KZTaskEx::AsyncObject object;
    };

    AsyncRun(KZTaskEx& owner, std::shared_ptr<platform::Process> task, std::string launchPath, Receiver receiver);

    // On the reading thread: starts the tool, then hands over what it prints until its output ends.
    void launch();
    void returnData(const KZTaskEx::AsyncNotification& notification);

    // Any thread, a callback of this run included. Waits for a callback that another thread is in; the main thread
    // serves its events meanwhile, since the callback may wait for them.
    void terminate();

    std::shared_ptr<platform::Process> theTask() const;
    Receiver receiver() const;

private:
    bool isExecutable() const;
    bool start();
    void readToEnd(platform::Process& task);
    void awaitCallback();

    KZTaskEx& m_owner;  // there as long as there is a receiver
    const std::string m_launchPath;

    mutable std::mutex m_mutex;
    std::shared_ptr<platform::Process> m_task;
    std::shared_ptr<const Receiver> m_receiver;  // never null; one without a selector once the run has ended

    std::recursive_mutex m_calling;  // held during a callback, which may end the run from within
};

}  // namespace kz
