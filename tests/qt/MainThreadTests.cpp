#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QEventLoop>
#include <QTest>
#include <QTimer>
#include <atomic>
#include <thread>

#include "platform/linux/qt/QtMainThread.h"

using namespace std::chrono_literals;
using platform::qt::QtMainThread;
using testing::ElementsAre;

TEST(TheMainThread, ServesWorkFromQtsOwnLoop) {
    QtMainThread mainThread;
    bool served = false;
    std::thread worker([&] { mainThread.performAndWait([&] { served = true; }); });
    EXPECT_TRUE(QTest::qWaitFor([&] { return served; }));
    worker.join();
}

TEST(TheMainThread, RunsWorkAtOnceWhenItIsItself) {
    QtMainThread mainThread;
    bool served = false;
    mainThread.performAndWait([&] { served = true; });
    EXPECT_TRUE(served);
}

TEST(TheMainThread, RunsWorkThatItHandsToItselfLater) {
    QtMainThread mainThread;
    bool served = false;
    mainThread.perform([&] { served = true; });
    EXPECT_FALSE(served);
    mainThread.runNextEvent(100ms);
    EXPECT_TRUE(served);
}

TEST(TheMainThread, KeepsTheOrderOfWork) {
    QtMainThread mainThread;
    std::vector<int> order;
    for (int i = 0; i < 3; ++i) {
        mainThread.perform([&order, i] { order.push_back(i); });
    }
    QTest::qWait(10);
    EXPECT_THAT(order, ElementsAre(0, 1, 2));
}

TEST(TheMainThread, FindsTheWorkBehindOneThatRunsALoop) {
    QtMainThread mainThread;
    bool nested = false;
    QEventLoop loop;
    mainThread.perform([&] {
        QTimer::singleShot(2000, &loop, &QEventLoop::quit);
        loop.exec();
    });
    mainThread.perform([&] {
        nested = loop.isRunning();
        loop.quit();
    });
    QTest::qWait(50);
    EXPECT_TRUE(nested);
}

TEST(TheMainThread, EndsAnEmptySliceInTime) {
    QtMainThread mainThread;
    QTest::qWait(20);
    const auto began = std::chrono::steady_clock::now();
    for (int i = 0; i < 10; ++i) {
        mainThread.runNextEvent(10ms);
    }
    const auto took = std::chrono::steady_clock::now() - began;
    EXPECT_LT(took, 1s);
    EXPECT_GE(took, 20ms);  // it waits instead of turning round and round
}

TEST(TheMainThread, WakesFromASliceForWork) {
    QtMainThread mainThread;
    QTest::qWait(20);
    bool served = false;
    std::thread worker([&] {
        std::this_thread::sleep_for(50ms);
        mainThread.perform([&] { served = true; });
    });
    const auto began = std::chrono::steady_clock::now();
    while (!served && std::chrono::steady_clock::now() - began < 5s) {
        mainThread.runNextEvent(4000ms);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - began, 2s);
    worker.join();
}

TEST(TheMainThread, ServesManyWorkersAtOnce) {
    QtMainThread mainThread;
    int sum = 0;  // only the main thread touches it
    std::atomic<int> left = 4;
    std::vector<std::thread> workers;
    workers.reserve(4);
    for (int i = 0; i < 4; ++i) {
        workers.emplace_back([&] {
            for (int n = 0; n < 500; ++n) {
                mainThread.performAndWait([&] { ++sum; });
            }
            --left;
        });
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return left == 0; }, 20000));
    for (auto& worker : workers) {
        worker.join();
    }
    EXPECT_EQ(sum, 2000);
}
