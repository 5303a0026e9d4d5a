// A prompt that a test answers beforehand.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/rights/PasswordPrompt.h"

// Each question takes the next of the steps, in a thread of its own. One for which there is none fails the test, and is
// cancelled.
class AnsweringPrompt : public platform::rights::PasswordPrompt {
public:
    struct Step {
        std::optional<std::string> password{};  // none: cancel
        std::string user{};                     // empty: the usual one
        std::chrono::milliseconds after{0};
        std::optional<std::chrono::milliseconds> cancelAfter{};  // after the answer
        bool isAnswered = true;                                  // false: the question just stands
    };

    AnsweringPrompt(std::deque<Step> steps, std::string usual) : m_steps(std::move(steps)), m_usual(std::move(usual)) {}
    ~AnsweringPrompt() override {
        for (auto& thread : m_threads) {
            thread.join();
        }
    }
    AnsweringPrompt(const AnsweringPrompt&) = delete;
    AnsweringPrompt& operator=(const AnsweringPrompt&) = delete;

    void ask(platform::rights::PasswordRequest request, Answered answered) override {
        const std::lock_guard lock(m_mutex);
        m_open = true;
        m_requests.push_back(request);
        Step step = nextStep(request);
        if (!step.isAnswered) {
            return;
        }
        m_threads.emplace_back([step = std::move(step), answered = std::move(answered)] {
            std::this_thread::sleep_for(step.after);
            if (step.password) {
                answered(platform::rights::PasswordAnswer{.user = step.user,
                                                          .password = platform::rights::Secret(*step.password)});
                std::this_thread::sleep_for(step.cancelAfter.value_or(std::chrono::milliseconds{0}));
            }
            if (!step.password || step.cancelAfter) {
                answered(std::nullopt);
            }
        });
    }

    void close() override {
        const std::lock_guard lock(m_mutex);
        m_open = false;
    }

    bool isOpen() {
        const std::lock_guard lock(m_mutex);
        return m_open;
    }
    std::vector<platform::rights::PasswordRequest> requests() {
        const std::lock_guard lock(m_mutex);
        return m_requests;
    }

private:
    Step nextStep(const platform::rights::PasswordRequest& request) {
        if (m_steps.empty()) {
            ADD_FAILURE() << "asked once more than the test answers: problem " << static_cast<int>(request.problem)
                          << ", question \"" << request.question << "\", details \"" << request.details << "\"";
            return {};
        }
        Step step = std::move(m_steps.front());
        m_steps.pop_front();
        if (step.user.empty()) {
            step.user = m_usual;
        }
        return step;
    }

    std::mutex m_mutex;
    std::deque<Step> m_steps;
    const std::string m_usual;
    std::vector<platform::rights::PasswordRequest> m_requests;
    std::vector<std::thread> m_threads;
    bool m_open = false;
};
