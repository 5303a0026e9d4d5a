// What runs in the background are tested with: delegates that remember what they are handed, and a fixture that waits
// until the threads of the runs are gone.
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "lib/KZTaskEx.h"
#include "tests/fakes/FailingFileManager.h"
#include "tests/fakes/ProcessCensus.h"
#include "tests/lib/TaskFixture.h"

namespace backgroundruns {

using namespace std::chrono_literals;

inline constexpr auto patience = 20s;

// Whether it becomes true in time; asked again and again until it is.
inline bool within(std::chrono::steady_clock::duration limit, const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

// Remembers what it is handed.
class Reader {
public:
    void dataArrived(const std::string& data, KZTaskEx& task, const KZTaskEx::AsyncObject& object) {
        if (whenCalled) {
            whenCalled(data, task);
        }
        const std::lock_guard lock(m_mutex);
        m_text += data;
        m_bytes.push_back(data.size());
        m_task = &task;
        m_object = object;
        m_thread = std::this_thread::get_id();
        m_called.notify_all();
    }

    // True once the empty piece has come.
    bool reachesTheEnd() {
        std::unique_lock lock(m_mutex);
        return m_called.wait_for(lock, patience, [this] { return !m_bytes.empty() && m_bytes.back() == 0; });
    }
    bool getsSomething() {
        std::unique_lock lock(m_mutex);
        return m_called.wait_for(lock, patience, [this] { return !m_bytes.empty(); });
    }
    std::string text() const {
        const std::lock_guard lock(m_mutex);
        return m_text;
    }
    std::vector<std::size_t> sizes() const {
        const std::lock_guard lock(m_mutex);
        return m_bytes;
    }
    const KZTaskEx* task() const { return m_task; }
    KZTaskEx::AsyncObject object() const { return m_object; }
    std::thread::id thread() const { return m_thread; }

    std::function<void(const std::string&, KZTaskEx&)> whenCalled;

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_called;
    std::string m_text;
    std::vector<std::size_t> m_bytes;
    KZTaskEx* m_task = nullptr;
    KZTaskEx::AsyncObject m_object;
    std::thread::id m_thread;
};

// A thread that has come by says so when it ends, in a way that a sanitizer understands.
class Visitor {
public:
    static void note() { thread_local const Visitor here; }
    static void meetThoseThatLeft() { left.load(); }
    ~Visitor() { ++left; }

private:
    static inline std::atomic<int> left = 0;
};

class VisitedMainThread : public platform::posix::MainQueue {
public:
    bool isCurrent() override {
        Visitor::note();
        return MainQueue::isCurrent();
    }
};

// The threads of background runs use the host and the log until they are done; only then may these go.
class BackgroundFixture : public TaskFixture {
protected:
    BackgroundFixture() {
        KZLog::finishWriting();
        m_threads = fakes::ProcessCensus::take().threads;
    }
    void TearDown() override {
        EXPECT_TRUE(within(patience, [this] { return fakes::ProcessCensus::take().threads <= m_threads; }));
        Visitor::meetThoseThatLeft();
    }

    VisitedMainThread visitedMainThread;
    fakes::FailingFileManager visitedFiles{*platform::linux_host::services().files,
                                           [](const fakes::FailingFileManager::Call&) {
                                               Visitor::note();
                                               return std::nullopt;
                                           }};

    // The tools of the host that only seem to run, for the rest of the test.
    fakes::FakeProcesses& pretendTools() {
        auto host = platform::host();
        host.processes = &pretendedTools;
        platform::setHost(host);
        return pretendedTools;
    }

private:
    platform::Host makeVisitedHost() {
        auto host = makeHost();
        host.mainThread = &visitedMainThread;
        host.files = &visitedFiles;
        return host;
    }

    platform::ScopedHost m_visited{makeVisitedHost()};
    std::size_t m_threads = 0;
};

class ABackgroundRun : public BackgroundFixture {
protected:
    void TearDown() override {
        task.terminateTask();
        BackgroundFixture::TearDown();
    }
    void start(const std::string& text) { start(task, text); }
    void start(KZTaskEx& runner, const std::string& text) {
        runner.asyncDataFromTask("/bin/bash", script(text), &reader, &Reader::dataArrived, nullptr);
    }
    bool hasEnded() const {
        return within(patience, [this] { return task.theTask() == nullptr; });
    }

    Reader reader;
    KZTaskEx task;
};

}  // namespace backgroundruns
