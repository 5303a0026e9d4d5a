#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "lib/KZTaskEx.h"
#include "tests/fakes/FailingFileManager.h"
#include "tests/fakes/ProcessCensus.h"
#include "tests/lib/TaskFixture.h"

namespace {

using namespace std::chrono_literals;
using fakes::ProcessCensus;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr auto patience = 20s;

// Whether it becomes true in time; asked again and again until it is.
bool within(std::chrono::steady_clock::duration limit, const std::function<bool()>& condition) {
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
        m_threads = ProcessCensus::take().threads;
    }
    void TearDown() override {
        EXPECT_TRUE(within(patience, [this] { return ProcessCensus::take().threads <= m_threads; }));
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

TEST_F(ABackgroundRun, ReturnsBeforeTheToolHasEnded) {
    const auto begin = Clock::now();
    start("sleep 30");
    EXPECT_LT(Clock::now() - begin, 10s);
    EXPECT_NE(task.theTask(), nullptr);
}

TEST_F(ABackgroundRun, HandsOverTheOutputAsItComes) {
    start("echo first; while [ ! -e '" + disk.path() + "/go' ]; do sleep 0.01; done; echo second");
    ASSERT_TRUE(reader.getsSomething());
    EXPECT_EQ(reader.text(), "first\n");
    add("go", "");
    ASSERT_TRUE(reader.reachesTheEnd());
    EXPECT_EQ(reader.text(), "first\nsecond\n");
}

TEST_F(ABackgroundRun, EndsWithOneEmptyPiece) {
    start("echo text");
    ASSERT_TRUE(reader.reachesTheEnd());
    ASSERT_TRUE(hasEnded());
    EXPECT_THAT(reader.sizes(), ElementsAre(5, 0));
}

TEST_F(ABackgroundRun, OfAToolThatPrintsNothingGivesOneEmptyPieceAndForgetsTheDelegate) {
    start("exit 3");
    ASSERT_TRUE(reader.reachesTheEnd());
    EXPECT_TRUE(within(patience, [this] { return task.delegate() == nullptr; }));
    EXPECT_THAT(reader.sizes(), ElementsAre(0));
    EXPECT_FALSE(task.respondsToSelector());
}

TEST_F(ABackgroundRun, KeepsEveryByteAsItIs) {
    start("printf 'a\\000b\\377\\n'");
    ASSERT_TRUE(reader.reachesTheEnd());
    EXPECT_EQ(reader.text(), std::string("a\0b\377\n", 5));
}

TEST_F(ABackgroundRun, CallsOnAThreadOfItsOwn) {
    start("echo");
    ASSERT_TRUE(reader.reachesTheEnd());
    EXPECT_NE(reader.thread(), std::this_thread::get_id());
}

TEST_F(ABackgroundRun, HandsOverItselfAndTheContext) {
    const auto context = std::make_shared<int>(42);
    task.asyncDataFromTask("/bin/echo", {"text"}, &reader, &Reader::dataArrived, context);
    ASSERT_TRUE(reader.reachesTheEnd());
    EXPECT_EQ(reader.task(), &task);
    EXPECT_EQ(reader.object(), context);
}

TEST_F(ABackgroundRun, HandsOverNoContextWhenThereIsNone) {
    start("echo");
    ASSERT_TRUE(reader.reachesTheEnd());
    EXPECT_EQ(reader.object(), nullptr);
}

TEST_F(ABackgroundRun, KeepsTheContextUntilItHasEnded) {
    auto context = std::make_shared<int>(42);
    const std::weak_ptr<int> watch = context;
    auto& tools = pretendTools();
    tools.tools["/bin/true"].runsUntilEnded = true;
    task.asyncDataFromTask("/bin/true", {}, &reader, &Reader::dataArrived, std::move(context));
    EXPECT_EQ(task.object(), watch.lock());
    EXPECT_FALSE(watch.expired());
    task.terminateTask();
    EXPECT_TRUE(within(patience, [&] { return watch.expired(); }));
}

TEST_F(ABackgroundRun, TakesArgumentsAndAnEnvironmentOfItsOwn) {
    task.asyncDataFromTask("/usr/bin/env", {}, &reader, &Reader::dataArrived, nullptr,
                           KZTaskEx::Environment{{"ONLY", "this one"}});
    ASSERT_TRUE(reader.reachesTheEnd());
    EXPECT_EQ(reader.text(), "ONLY=this one\n");
}

TEST_F(ABackgroundRun, KeepsTheEnvironmentWithoutAnother) {
    ASSERT_EQ(::setenv("WICKFIELD_TEST", "kept", 1), 0);
    start("printf %s \"$WICKFIELD_TEST\"");
    ASSERT_TRUE(reader.reachesTheEnd());
    ::unsetenv("WICKFIELD_TEST");
    EXPECT_EQ(reader.text(), "kept");
}

TEST_F(ABackgroundRun, DropsWhatIsPrintedAsAnError) {
    start("echo bad >&2; echo good");
    ASSERT_TRUE(reader.reachesTheEnd());
    EXPECT_EQ(reader.text(), "good\n");
}

TEST_F(ABackgroundRun, TakesTheToolThatTheHostKeepsElsewhere) {
    auto& tools = pretendTools();
    tools.places["/usr/bin/no-such-tool"] = "/bin/true";
    task.asyncDataFromTask("/usr/bin/no-such-tool", {}, &reader, &Reader::dataArrived, nullptr);
    ASSERT_TRUE(reader.reachesTheEnd());
    EXPECT_EQ(tools.made().at(0)->options().path, "/bin/true");
}

TEST_F(ABackgroundRun, IsOverWhenNobodyIsThereToCall) {
    task.asyncDataFromTask("/bin/echo", {"text"}, static_cast<Reader*>(nullptr), &Reader::dataArrived, nullptr);
    EXPECT_FALSE(task.respondsToSelector());
    EXPECT_TRUE(hasEnded());
}

TEST_F(ABackgroundRun, DropsTheOutputOfADelegateThatDoesNotRespond) {
    task.asyncDataFromTask("/bin/echo", {"text"}, &reader, nullptr, nullptr);
    EXPECT_TRUE(hasEnded());
    EXPECT_THAT(reader.sizes(), IsEmpty());
    EXPECT_EQ(task.delegate(), nullptr);
}

TEST_F(ABackgroundRun, LogsAMissingToolAndCallsNobody) {
    task.asyncDataFromTask("/no/such/tool", {}, &reader, &Reader::dataArrived, nullptr);
    std::vector<std::string> entries;
    EXPECT_TRUE(within(patience, [&] {
        const auto more = newLogEntries();
        entries.insert(entries.end(), more.begin(), more.end());
        return !entries.empty();
    }));
    EXPECT_THAT(entries, ElementsAre("Unable to launch async task - task does not exist or is not executable"));
    EXPECT_EQ(newPrint(), "");
    EXPECT_THAT(reader.sizes(), IsEmpty());
}

TEST_F(ABackgroundRun, OfAMissingToolKeepsTaskAndDelegateUntilItIsEnded) {
    const auto context = std::make_shared<int>(42);
    task.asyncDataFromTask("/no/such/tool", {}, &reader, &Reader::dataArrived, context);
    EXPECT_TRUE(within(patience, [&] { return !newLogEntries().empty(); }));
    EXPECT_NE(task.theTask(), nullptr);
    EXPECT_EQ(task.delegate(), &reader);
    EXPECT_EQ(task.object(), context);
    task.terminateTask();
    EXPECT_EQ(task.theTask(), nullptr);
    EXPECT_EQ(task.delegate(), nullptr);
    EXPECT_EQ(task.object(), nullptr);
}

TEST_F(ABackgroundRun, LogsAToolThatIsNotExecutable) {
    task.asyncDataFromTask(add("file", "#!/bin/bash\n", false), {}, &reader, &Reader::dataArrived, nullptr);
    std::vector<std::string> entries;
    EXPECT_TRUE(within(patience, [&] { return !(entries = newLogEntries()).empty(); }));
    EXPECT_THAT(entries, ElementsAre("Unable to launch async task - task does not exist or is not executable"));
}

TEST_F(ABackgroundRun, LogsAnExceptionForAToolThatCannotBeStarted) {
    task.asyncDataFromTask(add("file", "#!/no/such/interpreter\n"), {}, &reader, &Reader::dataArrived, nullptr);
    std::vector<std::string> entries;
    EXPECT_TRUE(within(patience, [&] { return !(entries = newLogEntries()).empty(); }));
    EXPECT_THAT(entries, ElementsAre(StartsWith("Exception in -[KZTaskEx launchAsyncTask]. ")));
    EXPECT_THAT(reader.sizes(), IsEmpty());
}

TEST_F(ABackgroundRun, LogsAndPrintsThatThereIsNoTask) {
    task.launchAsyncTask();
    EXPECT_THAT(newLogEntries(), ElementsAre("Unable to launch async task - no task set"));
    EXPECT_EQ(newPrint(), "Unable to launch async task - no task set\n");
}

TEST_F(ABackgroundRun, LogsWhatACallbackThrowsAndEndsTheTool) {
    reader.whenCalled = [](const std::string&, KZTaskEx&) { throw std::runtime_error("no room"); };
    start("echo text; exec sleep 60");
    std::vector<std::string> entries;
    EXPECT_TRUE(within(patience, [&] { return !(entries = newLogEntries()).empty(); }));
    EXPECT_THAT(entries, ElementsAre("Exception in -[KZTaskEx launchAsyncTask]. NSException - no room."));
    EXPECT_TRUE(hasEnded());
}

TEST_F(ABackgroundRun, WrapsEachPieceInANotification) {
    pretendTools().tools["/bin/true"].runsUntilEnded = true;
    task.asyncDataFromTask("/bin/true", {}, &reader, &Reader::dataArrived, nullptr);
    KZTaskEx::AsyncNotification notification;
    EXPECT_EQ(notification.name, "KZAsyncTaskDataNotification");
    EXPECT_EQ(notification.sender, nullptr);
    notification.userInfo["NSFileHandleNotificationDataItem"] = "piece";
    task.asyncTaskReturnData(notification);
    EXPECT_EQ(reader.text(), "piece");
    EXPECT_NE(task.delegate(), nullptr);
    task.asyncTaskReturnData({});  // the end
    EXPECT_EQ(task.delegate(), nullptr);
    EXPECT_EQ(task.theTask(), nullptr);
}

class EndingABackgroundRun : public ABackgroundRun {};

TEST_F(EndingABackgroundRun, EndsTheTool) {
    start("echo; exec sleep 60");
    ASSERT_TRUE(reader.getsSomething());
    const auto process = task.theTask();
    const auto begin = Clock::now();
    task.terminateTask();
    EXPECT_TRUE(process->waitUntilExit(10s));
    EXPECT_LT(Clock::now() - begin, 10s);
    EXPECT_TRUE(process->endedBySignal());
}

TEST_F(EndingABackgroundRun, EndsItsSubtasksToo) {
    start("sleep 60 & echo $!; wait");
    ASSERT_TRUE(reader.getsSomething());
    const auto subtask = "/proc/" + std::to_string(std::stol(reader.text()));
    task.terminateTask();
    EXPECT_TRUE(within(patience, [&] {
        const auto status = read(subtask + "/stat");
        return status.empty() || status.find(") Z ") != std::string::npos;
    }));
}

TEST_F(EndingABackgroundRun, ForgetsTheDelegateAndTheTask) {
    start("echo; exec sleep 60");
    ASSERT_TRUE(reader.getsSomething());
    task.terminateAsyncTask();
    EXPECT_EQ(task.delegate(), nullptr);
    EXPECT_EQ(task.theTask(), nullptr);
    EXPECT_FALSE(task.respondsToSelector());
}

TEST_F(EndingABackgroundRun, MeansThatNoCallComesAnyMore) {
    start("while :; do echo text; done");
    ASSERT_TRUE(reader.getsSomething());
    task.terminateTask();
    const auto calls = reader.sizes().size();
    std::this_thread::sleep_for(200ms);
    EXPECT_EQ(reader.sizes().size(), calls);
}

TEST_F(EndingABackgroundRun, FromWithinTheCallbackStopsAtThatPiece) {
    reader.whenCalled = [](const std::string&, KZTaskEx& runner) { runner.terminateTask(); };
    start("while :; do echo text; done");
    ASSERT_TRUE(reader.getsSomething());
    ASSERT_TRUE(hasEnded());
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(reader.sizes().size(), 1U);
}

TEST_F(EndingABackgroundRun, WaitsForACallbackOnAnotherThread) {
    std::atomic<bool> entered = false;
    std::atomic<bool> left = false;
    reader.whenCalled = [&](const std::string&, KZTaskEx&) {
        entered = true;
        std::this_thread::sleep_for(100ms);
        left = true;
    };
    start("echo; exec sleep 60");
    ASSERT_TRUE(within(patience, [&] { return entered.load(); }));
    std::thread([&] {
        task.terminateTask();
        EXPECT_TRUE(left);
    }).join();
}

TEST_F(EndingABackgroundRun, OnTheMainThreadServesACallbackThatNeedsIt) {
    std::atomic<bool> entered = false;
    bool done = false;
    reader.whenCalled = [&](const std::string&, KZTaskEx&) {
        entered = true;
        visitedMainThread.performAndWait([&done] { done = true; });
    };
    start("echo; exec sleep 60");
    ASSERT_TRUE(within(patience, [&] { return entered.load(); }));
    task.terminateTask();
    EXPECT_TRUE(done);
}

TEST_F(EndingABackgroundRun, IsHarmlessWhenThereIsNone) {
    task.terminateTask();
    start("echo");
    ASSERT_TRUE(reader.reachesTheEnd());
    task.terminateTask();
    task.terminateTask();
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(EndingABackgroundRun, BeforeTheToolWasStartedKeepsItFromStarting) {
    auto& tools = pretendTools();
    for (int round = 0; round < 200; ++round) {
        task.asyncDataFromTask("/bin/true", {}, &reader, &Reader::dataArrived, nullptr);
        task.terminateTask();
    }
    EXPECT_TRUE(within(patience, [&] {
        const auto made = tools.made();
        return std::none_of(made.begin(), made.end(), [](const auto& process) { return process->isRunning(); });
    }));
}

TEST_F(EndingABackgroundRun, HappensWhenTheOutputEndsAndTheToolRunsOn) {
    start("echo text; exec >&-; exec sleep 60");
    const auto process = task.theTask();
    ASSERT_TRUE(reader.reachesTheEnd());
    EXPECT_EQ(reader.text(), "text\n");
    EXPECT_TRUE(process->waitUntilExit(10s));
    EXPECT_TRUE(process->endedBySignal());
}

TEST_F(EndingABackgroundRun, LeavesAToolThatIsAboutToEndItsMoment) {
    std::optional<int> status;
    reader.whenCalled = [&](const std::string& data, KZTaskEx& runner) {
        if (data.empty()) {
            status = runner.theTask()->terminationStatus();
        }
    };
    start("exit 7");
    ASSERT_TRUE(reader.reachesTheEnd());
    EXPECT_EQ(status, 7);
}

TEST_F(EndingABackgroundRun, HappensWhenTheNextIsStarted) {
    start("echo first; exec sleep 60");
    ASSERT_TRUE(reader.getsSomething());
    const auto process = task.theTask();
    Reader other;
    task.asyncDataFromTask("/bin/echo", {"second"}, &other, &Reader::dataArrived, nullptr);
    ASSERT_TRUE(other.reachesTheEnd());
    EXPECT_TRUE(process->waitUntilExit(10s));
    EXPECT_EQ(other.text(), "second\n");
    EXPECT_EQ(reader.text(), "first\n");
    task.terminateTask();
}

TEST_F(EndingABackgroundRun, LeavesTheNextAloneThatACallbackStarts) {
    Reader next;
    reader.whenCalled = [&](const std::string& data, KZTaskEx& runner) {
        if (data.empty()) {
            runner.asyncDataFromTask("/bin/echo", {"next"}, &next, &Reader::dataArrived, nullptr);
        }
    };
    start("echo");
    ASSERT_TRUE(next.reachesTheEnd());
    EXPECT_EQ(next.text(), "next\n");
    EXPECT_TRUE(hasEnded());
}

class ABackgroundRunWhoseOwnerGoes : public ABackgroundRun {};

TEST_F(ABackgroundRunWhoseOwnerGoes, EndsItsTool) {
    std::shared_ptr<platform::Process> process;
    {
        KZTaskEx runner;
        start(runner, "echo; exec sleep 60");
        ASSERT_TRUE(reader.getsSomething());
        process = runner.theTask();
    }
    EXPECT_TRUE(process->waitUntilExit(10s));
    EXPECT_TRUE(process->endedBySignal());
}

TEST_F(ABackgroundRunWhoseOwnerGoes, CallsNobodyAnyMore) {
    for (int round = 0; round < 50; ++round) {
        auto delegate = std::make_unique<Reader>();
        auto runner = std::make_unique<KZTaskEx>();
        runner->asyncDataFromTask("/bin/bash", script("while :; do echo text; done"), delegate.get(),
                                  &Reader::dataArrived, nullptr);
        if (round % 2 == 0) {
            ASSERT_TRUE(delegate->getsSomething());
        }
        runner.reset();
        delegate.reset();  // a sanitizer sees whoever still uses it
    }
}

TEST_F(ABackgroundRunWhoseOwnerGoes, MayLoseItWithinTheCallback) {
    auto runner = std::make_unique<KZTaskEx>();
    auto* const started = runner.get();
    std::atomic<bool> gone = false;
    reader.whenCalled = [&](const std::string&, KZTaskEx&) {
        runner.reset();
        gone = true;
    };
    start(*started, "while :; do echo text; done");
    EXPECT_TRUE(within(patience, [&] { return gone.load(); }));
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(reader.sizes().size(), 1U);
}

// The owner goes after all static objects that were made along with its first run; a sanitizer sees whoever still uses
// one.
void endTheProgramWithTwoRuns() {
    platform::setHost(platform::linux_host::services());
    static KZTaskEx* runner = nullptr;
    (void)std::atexit([] { delete runner; });
    runner = new KZTaskEx;
    runner->asyncDataFromTask("/bin/sleep", {"60"}, new Reader, &Reader::dataArrived, nullptr);
    {
        KZTaskEx other;
        other.asyncDataFromTask("/bin/sleep", {"60"}, new Reader, &Reader::dataArrived, nullptr);
    }
    within(1s, [] { return ProcessCensus::take().threads <= 2; });  // this one and the first reader
    std::exit(0);  // NOLINT(concurrency-mt-unsafe): what happens then is the question
}

TEST(ABackgroundRunWhoseProgramEnds, MayHaveAnOwnerThatGoesLast) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(endTheProgramWithTwoRuns(), testing::ExitedWithCode(0), "");
}

class ManyBackgroundRuns : public BackgroundFixture {};

TEST_F(ManyBackgroundRuns, AtOnceGetEachItsOwnOutputAndLeaveNothingBehind) {
    if (!ProcessCensus::possible()) {
        GTEST_SKIP() << "this system does not show what a process holds";
    }
    const auto before = ProcessCensus::take();
    constexpr std::size_t count = 200;
    std::vector<std::unique_ptr<Reader>> readers;
    {
        std::vector<std::unique_ptr<KZTaskEx>> runners;
        for (std::size_t number = 0; number < count; ++number) {
            readers.push_back(std::make_unique<Reader>());
            runners.push_back(std::make_unique<KZTaskEx>());
            runners.back()->asyncDataFromTask("/bin/echo", {std::to_string(number)}, readers.back().get(),
                                              &Reader::dataArrived, nullptr);
        }
        for (std::size_t number = 0; number < count; ++number) {
            ASSERT_TRUE(readers[number]->reachesTheEnd()) << number;
            EXPECT_EQ(readers[number]->text(), std::to_string(number) + "\n");
        }
    }
    EXPECT_EQ(ProcessCensus::takeUntil(before), before);
}

TEST_F(ManyBackgroundRuns, ThatAreAllCutShortLeaveNothingBehind) {
    if (!ProcessCensus::possible()) {
        GTEST_SKIP() << "this system does not show what a process holds";
    }
    const auto before = ProcessCensus::take();
    Reader reader;
    {
        std::vector<std::unique_ptr<KZTaskEx>> runners;
        for (int number = 0; number < 200; ++number) {
            runners.push_back(std::make_unique<KZTaskEx>());
            runners.back()->asyncDataFromTask("/bin/sleep", {"60"}, &reader, &Reader::dataArrived, nullptr);
        }
    }
    EXPECT_EQ(ProcessCensus::takeUntil(before), before);
    EXPECT_THAT(reader.sizes(), IsEmpty());
}

TEST_F(ManyBackgroundRuns, OneAfterTheOtherOnOneRunnerLeaveNothingBehind) {
    if (!ProcessCensus::possible()) {
        GTEST_SKIP() << "this system does not show what a process holds";
    }
    const auto before = ProcessCensus::take();
    {
        KZTaskEx runner;
        for (int number = 0; number < 100; ++number) {
            Reader reader;
            runner.asyncDataFromTask("/bin/echo", {"text"}, &reader, &Reader::dataArrived, nullptr);
            ASSERT_TRUE(reader.reachesTheEnd());
            runner.terminateTask();  // the reader may be in its last callback still
        }
    }
    EXPECT_EQ(ProcessCensus::takeUntil(before), before);
}

TEST_F(ManyBackgroundRuns, ThatCannotBeStartedLeaveNothingBehind) {
    if (!ProcessCensus::possible()) {
        GTEST_SKIP() << "this system does not show what a process holds";
    }
    const auto file = add("file", "#!/no/such/interpreter\n");
    const auto before = ProcessCensus::take();
    {
        Reader reader;
        KZTaskEx runner;
        for (int number = 0; number < 50; ++number) {
            runner.asyncDataFromTask(number % 2 == 0 ? file : "/no/such/tool", {}, &reader, &Reader::dataArrived,
                                     nullptr);
        }
    }
    EXPECT_EQ(ProcessCensus::takeUntil(before), before);
}

// Counts bytes and keeps none.
class Counter {
public:
    void dataArrived(const std::string& data, KZTaskEx& /*task*/, const KZTaskEx::AsyncObject& /*object*/) {
        m_bytes += data.size();
        m_largest = std::max(m_largest, data.size());
        m_ended = data.empty();
    }
    bool reachesTheEnd() {
        return within(120s, [this] { return m_ended.load(); });
    }
    std::uint64_t bytes() const { return m_bytes; }
    std::size_t largest() const { return m_largest; }

private:
    std::uint64_t m_bytes = 0;
    std::size_t m_largest = 0;
    std::atomic<bool> m_ended = false;
};

TEST_F(ABackgroundRun, HandsOverAGibibyteInPiecesOfAModestSize) {
    constexpr std::uint64_t gibibyte = std::uint64_t{1} << 30U;
    Counter counter;
    task.asyncDataFromTask("/usr/bin/head", {"-c", std::to_string(gibibyte), "/dev/zero"}, &counter,
                           &Counter::dataArrived, nullptr);
    ASSERT_TRUE(counter.reachesTheEnd());
    EXPECT_EQ(counter.bytes(), gibibyte);
    EXPECT_LE(counter.largest(), std::size_t{1} << 20U);
}

}  // namespace
