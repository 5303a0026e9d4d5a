#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "platform/ports/Alerts.h"

namespace fakes {

// Keeps every alert that was shown; answers at once with `answer` when that is set, else waits for respond().
class FakeAlerts : public platform::Alerts {
public:
    struct Shown {
        platform::AlertContents contents;
        platform::Window* parent = nullptr;
        std::function<void(long)> didEnd;
        bool visible = false;
        bool orderedOut = false;
    };

    std::vector<std::shared_ptr<Shown>> shown;
    std::function<std::optional<long>(const Shown&)> answer;

    std::unique_ptr<platform::Alert> make(const platform::AlertContents& contents) override {
        auto record = std::make_shared<Shown>();
        record->contents = contents;
        shown.push_back(record);
        return std::make_unique<FakeAlert>(*this, record);
    }

    static void respond(Shown& alert, long code) {
        alert.visible = false;
        if (const auto ended = std::exchange(alert.didEnd, nullptr)) {
            ended(code);
        }
    }

private:
    class FakeAlert : public platform::Alert {
    public:
        FakeAlert(FakeAlerts& owner, std::shared_ptr<Shown> record) : m_owner(owner), m_record(std::move(record)) {}
        void begin(platform::Window* parent, std::function<void(long)> didEnd) override {
            m_record->parent = parent;
            m_record->didEnd = std::move(didEnd);
            m_record->visible = true;
            if (m_owner.answer) {
                if (const auto code = m_owner.answer(*m_record)) {
                    respond(*m_record, *code);
                }
            }
        }
        bool isVisible() override { return m_record->visible; }
        void orderOut() override {
            m_record->visible = false;
            m_record->orderedOut = true;
        }

    private:
        FakeAlerts& m_owner;
        std::shared_ptr<Shown> m_record;
    };
};

}  // namespace fakes
