#include "lib/base/TextQueue.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <future>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;

// What the handler was given, and a gate that it waits at while it is shut.
class Collector {
public:
    kz::TextQueue::Handler handler() {
        return [this](const kz::TextBatch& batch) {
            std::unique_lock lock(m_mutex);
            ++m_batches;
            m_changed.notify_all();
            m_changed.wait(lock, [this] { return !m_shut; });
            for (std::size_t at = 0; at < batch.size(); ++at) {
                m_texts.emplace_back(batch[at]);
            }
        };
    }
    void shut() { set(true); }
    void open() { set(false); }
    void waitForBatch() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_batches > 0; });
    }
    std::vector<std::string> texts() const {
        const std::lock_guard lock(m_mutex);
        return m_texts;
    }

private:
    void set(bool shut) {
        const std::lock_guard lock(m_mutex);
        m_shut = shut;
        m_changed.notify_all();
    }

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::string> m_texts;
    int m_batches = 0;
    bool m_shut = false;
};

using Texts = std::vector<std::string>;

TEST(TextQueue, HandsOverTextsInTheirOrder) {
    Collector collector;
    kz::TextQueue queue(collector.handler());
    Texts posted;
    for (int number = 0; number < 10000; ++number) {
        posted.push_back("text " + std::to_string(number));
        queue.post(posted.back());
    }
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(collector.texts(), posted);
}

TEST(TextQueue, HandsOverEmptyAndHugeTexts) {
    Collector collector;
    kz::TextQueue queue(collector.handler());
    const Texts posted{"", std::string(3 << 20, 'x'), "", "y", std::string(300000, 'z')};
    for (const std::string& text : posted) {
        queue.post(text);
    }
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(collector.texts(), posted);
}

TEST(TextQueue, KeepsEachThreadsOrder) {
    Collector collector;
    kz::TextQueue queue(collector.handler());
    std::vector<std::thread> threads;
    for (const char name : {'a', 'b', 'c', 'd'}) {
        threads.emplace_back([&queue, name] {
            for (int number = 1000; number < 3000; ++number) {
                queue.post(name + std::to_string(number));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    queue.waitUntilAllOperationsAreFinished();
    const Texts texts = collector.texts();
    ASSERT_EQ(texts.size(), 8000U);
    std::map<char, std::string> last;
    for (const std::string& text : texts) {
        EXPECT_LT(last[text.front()], text);
        last[text.front()] = text;
    }
}

TEST(TextQueue, CountsTheRunningOperationsToo) {
    Collector collector;
    collector.shut();
    kz::TextQueue queue(collector.handler());
    queue.post("running");
    collector.waitForBatch();
    queue.post("waiting");
    EXPECT_EQ(queue.operationCount(), 2U);
    collector.open();
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(queue.operationCount(), 0U);
}

TEST(TextQueue, FinishesTheRunningOperationWhenTheOthersAreCancelled) {
    Collector collector;
    collector.shut();
    kz::TextQueue queue(collector.handler());
    queue.post("running");
    collector.waitForBatch();
    queue.post("dropped");
    queue.cancelAllOperations();
    collector.open();
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(collector.texts(), Texts{"running"});
}

TEST(TextQueue, BeginsNothingWhileSuspended) {
    Collector collector;
    kz::TextQueue queue(collector.handler());
    queue.setSuspended(true);
    queue.post("held");
    std::this_thread::sleep_for(20ms);
    EXPECT_TRUE(collector.texts().empty());
    EXPECT_EQ(queue.operationCount(), 1U);
    queue.setSuspended(false);
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(collector.texts(), Texts{"held"});
}

TEST(TextQueue, ReleasesAWaiterWhenWhatItWaitsForIsCancelled) {
    Collector collector;
    kz::TextQueue queue(collector.handler());
    queue.setSuspended(true);
    queue.post("dropped");
    auto waiter = std::async(std::launch::async, [&] { queue.waitUntilAllOperationsAreFinished(); });
    queue.cancelAllOperations();
    waiter.get();
    EXPECT_TRUE(collector.texts().empty());
}

TEST(TextQueue, ReturnsAtOnceWhenItsOwnHandlerWaits) {
    kz::TextQueue* self = nullptr;
    int runs = 0;
    kz::TextQueue queue([&](const kz::TextBatch&) {
        self->waitUntilAllOperationsAreFinished();
        ++runs;
    });
    self = &queue;
    queue.post("x");
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(runs, 1);
}

TEST(TextQueue, TakesTextsFromItsOwnHandler) {
    Texts texts;
    kz::TextQueue* self = nullptr;
    kz::TextQueue queue([&](const kz::TextBatch& batch) {
        for (std::size_t at = 0; at < batch.size(); ++at) {
            texts.emplace_back(batch[at]);
            if (batch[at] == "first") {
                self->post("second");
            }
        }
    });
    self = &queue;
    queue.post("first");
    while (queue.operationCount() > 0) {
        queue.waitUntilAllOperationsAreFinished();
    }
    EXPECT_EQ(texts, (Texts{"first", "second"}));
}

TEST(TextQueue, TakesNothingOnceClosed) {
    Collector collector;
    kz::TextQueue queue(collector.handler());
    queue.close();
    queue.post("late");
    EXPECT_EQ(queue.operationCount(), 0U);
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_TRUE(collector.texts().empty());
}

TEST(TextQueue, ClosesWhileSuspendedAndFull) {
    Collector collector;
    kz::TextQueue queue(collector.handler());
    queue.setSuspended(true);
    queue.post("dropped");
    queue.close();
    queue.close();
    EXPECT_TRUE(collector.texts().empty());
}

}  // namespace
