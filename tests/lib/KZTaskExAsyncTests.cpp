#include <algorithm>
#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>

#include "tests/lib/BackgroundRuns.h"

namespace {

using namespace std::chrono_literals;
using backgroundruns::ABackgroundRun;
using backgroundruns::patience;
using backgroundruns::Reader;
using backgroundruns::within;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

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
