// What every host does about an exception that nobody catches: the pretended one and the one that ends the process.
#include <gtest/gtest.h>

#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <thread>

#include "HostUnderTest.h"
#include "tests/fakes/FakeUncaughtExceptions.h"

namespace {

void first(const std::string& reason) { std::cerr << "first: " << reason << std::endl; }
void second(const std::string& reason) { std::cerr << "second: " << reason << std::endl; }

platform::UncaughtExceptions& real() { return *host_under_test::services().exceptions; }

template <typename Value>
void throwOnAThread(const Value& value) {
    std::thread([&value] { throw value; }).join();
}

TEST(UncaughtExceptionsContract, TellTheReasonBeforeTheProcessEnds) {
    const auto ofThePretended = [] {
        fakes::FakeUncaughtExceptions pretended;
        pretended.setHandler(first);
        testing::internal::CaptureStderr();
        pretended.raise("the roof is at 100% load");
        return testing::internal::GetCapturedStderr();
    };
    const auto ofTheReal = [] {
        real().setHandler(first);
        throwOnAThread(std::runtime_error("the roof is at 100% load"));
    };
    EXPECT_EQ(ofThePretended(), "first: the roof is at 100% load\n");
    EXPECT_DEATH(ofTheReal(), "^first: the roof is at 100% load\n");
}

TEST(UncaughtExceptionsContract, TellTheHandlerThatWasSetLast) {
    fakes::FakeUncaughtExceptions pretended;
    pretended.setHandler(first);
    pretended.setHandler(second);
    testing::internal::CaptureStderr();
    pretended.raise("reason");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "second: reason\n");

    const auto withTheReal = [] {
        real().setHandler(first);
        real().setHandler(second);
        throwOnAThread(std::runtime_error("reason"));
    };
    EXPECT_DEATH(withTheReal(), "^second: reason\n");
}

TEST(UncaughtExceptionsContract, TellOfAValueThatIsNoException) {
    const auto work = [] {
        real().setHandler(first);
        throwOnAThread(42);
    };
    EXPECT_DEATH(work(), "^first: unknown exception\n");
}

TEST(UncaughtExceptionsContract, TellOfAnEndWithoutAnException) {
    const auto work = [] {
        real().setHandler(first);
        std::terminate();
    };
    EXPECT_DEATH(work(), "^first: terminate called without an active exception\n");
}

}  // namespace
