#include "lib/KZAlert.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <limits>
#include <thread>

#include "platform/ports/Host.h"
#include "tests/fakes/FakeAlerts.h"
#include "tests/fakes/FakeConsole.h"
#include "tests/fakes/FakeControls.h"
#include "tests/fakes/FakeMainThread.h"

using namespace std::chrono_literals;
using fakes::FakeAlerts;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const KZAlert::Text none;
constexpr const char* ownCallback = "alertDidEnd:returnCode:contextInfo:";

class Alerting : public testing::Test {
protected:
    static platform::Host makeHost(Alerting& test) {
        platform::Host host;
        host.alerts = &test.alerts;
        host.mainThread = &test.mainThread;
        host.console = &test.console;
        return host;
    }

    FakeAlerts::Shown& shown(std::size_t index = 0) { return *alerts.shown.at(index); }

    // Serves the main thread until the condition holds; false when it takes too long.
    template <typename Condition>
    bool serveUntil(Condition condition, std::chrono::milliseconds limit = 10s) {
        const auto deadline = std::chrono::steady_clock::now() + limit;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
            mainThread.runNextEvent(5ms);
        }
        return true;
    }

    // The result of a call that another thread makes, with the main thread served meanwhile.
    template <typename Call>
    std::int64_t fromWorker(Call call) {
        auto result = std::async(std::launch::async, call);
        EXPECT_TRUE(serveUntil([&] { return result.wait_for(0s) == std::future_status::ready; }));
        return result.get();
    }

    void answerAtOnce(long code) {
        alerts.answer = [code](const FakeAlerts::Shown&) { return code; };
    }

    FakeAlerts alerts;
    fakes::FakeMainThread mainThread;
    fakes::FakeConsole console;
    fakes::FakeWindow window;
    platform::ScopedHost host{makeHost(*this)};
};

using Answering = Alerting;
using Timing = Alerting;
using Delegating = Alerting;

}  // namespace

TEST_F(Alerting, ShowsTitleAndTextOnTheWindowWithTheHostsOwnButtons) {
    answerAtOnce(1);
    KZAlert::alertSheetWithMessageText("Installation complete", "It worked.", &window);
    EXPECT_EQ(shown().contents.messageText, "Installation complete");
    EXPECT_EQ(shown().contents.informativeText, "It worked.");
    EXPECT_EQ(shown().contents.defaultButton, std::nullopt);
    EXPECT_EQ(shown().contents.alternateButton, std::nullopt);
    EXPECT_EQ(shown().contents.otherButton, std::nullopt);
    EXPECT_EQ(shown().contents.suppressionKey, std::nullopt);
    EXPECT_EQ(shown().parent, &window);
}

TEST_F(Alerting, HandsTheButtonTitlesOver) {
    answerAtOnce(1);
    KZAlert::alertSheetWithMessageText("t", "Download", "Cancel", "Later", "i", &window, Block::yes);
    EXPECT_EQ(shown().contents.defaultButton, "Download");
    EXPECT_EQ(shown().contents.alternateButton, "Cancel");
    EXPECT_EQ(shown().contents.otherButton, "Later");
}

TEST_F(Alerting, ShowsAPlaceholderInTheTextLiterally) {
    answerAtOnce(1);
    KZAlert::alertSheetWithMessageText("100%", "50%@ of %s%n", &window);
    EXPECT_EQ(shown().contents.messageText, "100%");
    EXPECT_EQ(shown().contents.informativeText, "50%@ of %s%n");
}

TEST_F(Alerting, ShowsEmptyTextsWhereNoneAreGiven) {
    answerAtOnce(1);
    KZAlert::alertSheetWithMessageText(none, none, none, none, none, &window, Block::yes);
    EXPECT_EQ(shown().contents.messageText, "");
    EXPECT_EQ(shown().contents.informativeText, "");
}

TEST_F(Alerting, TakesAnEmptyButtonTitleForAnAbsentOne) {
    answerAtOnce(1);
    KZAlert::alertSheetWithMessageText("t", "", "", "", "i", &window, Block::yes);
    EXPECT_EQ(shown().contents.defaultButton, std::nullopt);
    EXPECT_EQ(shown().contents.alternateButton, std::nullopt);
}

TEST_F(Alerting, BringsItsWindowToTheFront) {
    answerAtOnce(1);
    KZAlert::alertSheetWithMessageText("t", "i", &window);
    EXPECT_EQ(window.broughtToFront, 1);
}

TEST_F(Alerting, StandsFreeWhenItsWindowCarriesASheetAlready) {
    answerAtOnce(1);
    window.sheet = true;
    KZAlert::alertSheetWithMessageText("t", "i", &window);
    EXPECT_EQ(shown().parent, nullptr);
    EXPECT_EQ(window.broughtToFront, 0);
}

TEST_F(Alerting, StandsFreeWithoutAWindow) {
    answerAtOnce(1);
    EXPECT_EQ(KZAlert::alertSheetWithMessageText("t", "i", nullptr), 1);
    EXPECT_EQ(shown().parent, nullptr);
}

TEST_F(Alerting, BindsTheSuppressionBoxToTheUserDefault) {
    answerAtOnce(1);
    KZAlert::alertSheetWithMessageText("t", none, none, none, "i", &window, nullptr, none, Block::yes, nullptr,
                                       "dont-ask");
    EXPECT_EQ(shown().contents.suppressionKey, "dont-ask");
}

TEST_F(Alerting, IsAlwaysShownOnTheMainThread) {
    std::thread::id where;
    alerts.answer = [&](const FakeAlerts::Shown&) {
        where = std::this_thread::get_id();
        return 1L;
    };
    fromWorker([&] { return KZAlert::alertSheetWithMessageText("t", "i", &window); });
    EXPECT_EQ(where, std::this_thread::get_id());
}

TEST_F(Alerting, ReturnsAtOnceWithoutAnAnswerWhenItDoesNotWait) {
    EXPECT_EQ(KZAlert::alertSheetWithMessageText("t", none, none, none, "i", &window, Block::no), -1);
    EXPECT_TRUE(shown().visible);
    FakeAlerts::respond(shown(), 1);  // or it would keep its object, as it is to do while it is up
}

TEST_F(Alerting, ThatNobodyWaitsForMayBeAnsweredAfterItsCallerHasGone) {
    KZAlert::alertSheetWithMessageText("t", none, none, none, "i", &window, Block::no);
    FakeAlerts::respond(shown(), 0);
    EXPECT_FALSE(shown().visible);
}

TEST_F(Alerting, ThatNobodyWaitsForKeepsItsObjectUntilItHasEnded) {
    std::weak_ptr<KZAlert> watched;
    {
        const auto object = KZAlert::create();
        watched = object;
        KZAlert::alertSheetWithMessageText("t", none, none, none, "i", &window, nullptr, none, Block::no, object);
    }
    ASSERT_FALSE(watched.expired());
    FakeAlerts::respond(shown(), 1);
    EXPECT_TRUE(watched.expired());
}

TEST_F(Alerting, GivesNoAnswerOnAHostWithoutAlerts) {
    platform::Host bare = makeHost(*this);
    bare.alerts = nullptr;
    const platform::ScopedHost without(bare);
    EXPECT_EQ(KZAlert::alertSheetWithMessageText("t", "i", &window), -1);
}

TEST_F(Answering, GivesTheCodeOfEachButton) {
    for (const long code : {1L, 0L, -1L}) {
        answerAtOnce(code);
        EXPECT_EQ(KZAlert::alertSheetWithMessageText("t", "a", "b", "c", "i", &window, Block::yes), code);
    }
}

TEST_F(Answering, BlocksAWorkerUntilTheUserPressesTheOnlyButton) {
    auto result = std::async(std::launch::async, [&] { return KZAlert::alertSheetWithMessageText("t", "i", &window); });
    ASSERT_TRUE(serveUntil([&] { return !alerts.shown.empty(); }));
    EXPECT_EQ(result.wait_for(300ms), std::future_status::timeout);
    FakeAlerts::respond(shown(), 1);
    ASSERT_TRUE(serveUntil([&] { return result.wait_for(0s) == std::future_status::ready; }));
    EXPECT_EQ(result.get(), 1);
}

TEST_F(Answering, KeepsTheMainThreadServedWhileItWaitsThere) {
    bool served = false;
    std::thread worker([&] {  // served from the alert's waiting on: nothing else runs the loop
        mainThread.performAndWait([&] { served = true; });
        mainThread.performAndWait([&] { FakeAlerts::respond(shown(), 0); });
    });
    const auto code = KZAlert::alertSheetWithMessageText("t", "i", &window);
    worker.join();
    EXPECT_TRUE(served);
    EXPECT_EQ(code, 0);
}

TEST_F(Answering, LetsTheAlertGoOnceItHasBeenAnswered) {
    answerAtOnce(1);
    const auto object = KZAlert::create();
    KZAlert::alertSheetWithMessageText("t", none, none, none, "i", &window, nullptr, none, Block::yes, object);
    EXPECT_EQ(object->alert(), nullptr);
    EXPECT_TRUE(object->alertEnded());
    EXPECT_EQ(object->returnCode(), 1);
}

TEST_F(Answering, ForgetsAnEarlierAnswerOfTheSameObject) {
    answerAtOnce(0);
    const auto object = KZAlert::create();
    object->setAlertEnded(true);
    object->setReturnCode(1);
    EXPECT_EQ(KZAlert::alertSheetWithMessageText("t", "a", "b", none, "i", &window, nullptr, none, Block::yes, object),
              0);
}

TEST_F(Delegating, TellsTheCallersDelegateByItsCallback) {
    std::vector<std::int64_t> told;
    AlertDelegate delegate;
    delegate.callbacks["ended:"] = [&](platform::Alert*, std::int64_t code, void*) { told.push_back(code); };
    KZAlert::alertSheetWithMessageText("t", none, none, none, "i", &window, &delegate, "ended:", Block::no, nullptr);
    FakeAlerts::respond(shown(), -1);
    EXPECT_THAT(told, ElementsAre(-1));
}

TEST_F(Delegating, HandsItsAlertAndNoContextToTheCallback) {
    platform::Alert* seen = nullptr;
    void* context = &seen;
    const auto object = KZAlert::create();
    AlertDelegate delegate;
    delegate.callbacks[ownCallback] = [&](platform::Alert* alert, std::int64_t, void* info) {
        seen = alert;
        context = info;
    };
    KZAlert::alertSheetWithMessageText("t", none, none, none, "i", &window, &delegate, none, Block::no, object);
    const auto alert = object->alert();
    FakeAlerts::respond(shown(), 1);
    EXPECT_EQ(seen, alert.get());
    EXPECT_EQ(context, nullptr);
}

TEST_F(Delegating, RefusesADelegateThatDoesNotRespond) {
    const AlertDelegate deaf;
    EXPECT_EQ(
        KZAlert::alertSheetWithMessageText("t", none, none, none, "i", &window, &deaf, "ended:", Block::yes, nullptr),
        -1);
    EXPECT_THAT(alerts.shown, IsEmpty());
    EXPECT_THAT(console.lines(), ElementsAre("Alert error: delegate does not respond to selector ended:"));
}

TEST_F(Delegating, RefusesACallbackThatIsThereButEmpty) {
    AlertDelegate delegate;
    delegate.callbacks["ended:"] = nullptr;
    KZAlert::alertSheetWithMessageText("t", none, none, none, "i", &window, &delegate, "ended:", Block::yes, nullptr);
    EXPECT_THAT(alerts.shown, IsEmpty());
}

TEST_F(Delegating, RefusesAForeignCallbackWithoutADelegate) {
    EXPECT_EQ(
        KZAlert::alertSheetWithMessageText("t", none, none, none, "i", &window, nullptr, "other:", Block::yes, nullptr),
        -1);
    EXPECT_THAT(console.lines(), ElementsAre("Alert error: delegate does not respond to selector other:"));
}

TEST_F(Delegating, MakesTheObjectItsOwnDelegateWhenNoneIsGiven) {
    answerAtOnce(1);
    const auto object = KZAlert::create();
    KZAlert::alertSheetWithMessageText("t", none, none, none, "i", &window, nullptr, none, Block::yes, object);
    ASSERT_NE(object->delegate(), nullptr);
    EXPECT_TRUE(object->delegate()->respondsTo(ownCallback));
}

TEST_F(Delegating, IsIgnoredByTheFormWithoutAnAlertObject) {
    answerAtOnce(0);
    const AlertDelegate deaf;  // would be refused if it were looked at
    EXPECT_EQ(KZAlert::alertSheetWithMessageText("t", "a", "b", none, "i", &window, &deaf, "ended:", Block::no), 0);
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(Delegating, LeavesAWaitingCallWaitingUntilSomebodyEndsIt) {
    int told = 0;
    AlertDelegate delegate;
    delegate.callbacks["ended:"] = [&](platform::Alert*, std::int64_t, void*) { ++told; };
    const auto object = KZAlert::create();
    auto result = std::async(std::launch::async, [&] {
        return KZAlert::alertSheetWithMessageText("t", none, none, none, "i", &window, &delegate, "ended:", Block::yes,
                                                  object);
    });
    ASSERT_TRUE(serveUntil([&] { return !alerts.shown.empty(); }));
    FakeAlerts::respond(shown(), 1);
    EXPECT_EQ(result.wait_for(500ms), std::future_status::timeout);
    EXPECT_EQ(told, 1);
    object->setAlertEnded(true);
    ASSERT_TRUE(serveUntil([&] { return result.wait_for(0s) == std::future_status::ready; }));
}

TEST_F(Timing, TakesAnAlertThatNobodyAnswersAwayAndAnswersWithTheDefaultButton) {
    const auto began = std::chrono::steady_clock::now();
    const auto code = KZAlert::timedAlertSheetWithMessageText("t", "a", "b", none, "i", &window, 1);
    const auto took = std::chrono::steady_clock::now() - began;
    EXPECT_EQ(code, 1);
    EXPECT_TRUE(shown().orderedOut);
    EXPECT_GE(took, 1s);
    EXPECT_LT(took, 3s);
}

TEST_F(Timing, TakesAnAlertOfAWorkerAwayToo) {
    EXPECT_EQ(fromWorker([&] { return KZAlert::timedAlertSheetWithMessageText("t", "a", "b", none, "i", &window, 1); }),
              1);
    EXPECT_TRUE(shown().orderedOut);
}

TEST_F(Timing, GivesTheUsersAnswerWhenItComesFirst) {
    answerAtOnce(0);
    EXPECT_EQ(KZAlert::timedAlertSheetWithMessageText("t", "a", "b", none, "i", &window, 1), 0);
    EXPECT_FALSE(shown().orderedOut);
    std::this_thread::sleep_for(1200ms);  // the timer still fires, on an object that it holds
}

TEST_F(Timing, AnswersAtOnceForAnIntervalThatIsNotPositive) {
    EXPECT_EQ(KZAlert::timedAlertSheetWithMessageText("t", "a", "b", none, "i", &window, 0), 1);
    EXPECT_EQ(KZAlert::timedAlertSheetWithMessageText("t", "a", "b", none, "i", &window,
                                                      std::numeric_limits<std::int64_t>::min()),
              1);
}

TEST_F(Timing, WaitsForTheUserWithTheLongestInterval) {
    answerAtOnce(0);
    EXPECT_EQ(KZAlert::timedAlertSheetWithMessageText("t", "a", "b", none, "i", &window,
                                                      std::numeric_limits<std::int64_t>::max()),
              0);
}

TEST_F(Timing, OverwritesTheAnswerThatCameBefore) {
    const auto object = KZAlert::create();
    object->alertDidEnd(nullptr, 0, nullptr);
    object->defaultReturnAfterTimeInterval(0);
    EXPECT_EQ(object->returnCode(), 1);
}

TEST_F(Alerting, IsTakenOffTheScreenByTheMainThreadWhenAnotherThreadLetsItGo) {
    std::thread::id where;
    struct Watched : platform::Alert {
        explicit Watched(std::thread::id& seen) : m_seen(seen) {}
        ~Watched() override { m_seen = std::this_thread::get_id(); }
        Watched(const Watched&) = delete;
        Watched& operator=(const Watched&) = delete;
        void begin(platform::Window*, std::function<void(long)>) override {}
        bool isVisible() override { return true; }
        void orderOut() override {}
        std::thread::id& m_seen;
    };
    auto object = KZAlert::create();
    object->setAlert(std::make_shared<Watched>(where));
    std::thread([gone = std::move(object)]() mutable { gone.reset(); }).join();
    mainThread.runNextEvent(10ms);
    EXPECT_EQ(where, std::this_thread::get_id());
}
