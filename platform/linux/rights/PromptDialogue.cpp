#include "platform/linux/rights/PromptDialogue.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <array>
#include <cstdint>
#include <utility>

#include "platform/posix/Poll.h"

namespace platform::rights {

struct PromptDialogue::Shared {
    mutable std::mutex mutex;
    posix::Descriptor event{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    unsigned question = 0;  // the number of the one that is being asked
    std::optional<PasswordAnswer> answer;
    bool cancelled = false;

    void take(unsigned number, std::optional<PasswordAnswer> given) {
        const std::lock_guard lock(mutex);
        if (number != question || cancelled) {
            return;
        }
        cancelled = !given;
        answer = std::move(given);
        ::eventfd_write(event.get(), 1);
    }
};

// Without a descriptor nobody could be heard, so nobody is asked.
PromptDialogue::PromptDialogue(PasswordPrompt& prompt) : m_prompt(prompt), m_shared(std::make_shared<Shared>()) {
    m_shared->cancelled = !m_shared->event;
}

PromptDialogue::~PromptDialogue() {
    {
        const std::lock_guard lock(m_shared->mutex);
        ++m_shared->question;
        m_shared->answer.reset();
    }
    m_prompt.close();
}

void PromptDialogue::ask(PasswordRequest request) {
    unsigned number = 0;
    {
        const std::lock_guard lock(m_shared->mutex);
        if (m_shared->cancelled) {
            return;
        }
        m_hasAsked = true;
        number = ++m_shared->question;
        m_shared->answer.reset();
    }
    m_prompt.ask(std::move(request), [shared = m_shared, number](std::optional<PasswordAnswer> answer) {
        shared->take(number, std::move(answer));
    });
}

int PromptDialogue::descriptor() const { return m_shared->event.get(); }

std::optional<PasswordAnswer> PromptDialogue::takeAnswer() {
    const std::lock_guard lock(m_shared->mutex);
    if (!m_shared->cancelled) {
        eventfd_t count = 0;
        ::eventfd_read(m_shared->event.get(), &count);
    }
    return std::exchange(m_shared->answer, std::nullopt);
}

bool PromptDialogue::isCancelled() const {
    const std::lock_guard lock(m_shared->mutex);
    return m_shared->cancelled;
}

std::optional<PasswordAnswer> PromptDialogue::waitForAnswer() {
    for (;;) {
        if (isCancelled()) {
            return std::nullopt;
        }
        if (auto answer = takeAnswer()) {
            return answer;
        }
        std::array<pollfd, 1> watched{{{descriptor(), POLLIN, 0}}};
        posix::pollUntil(watched, std::chrono::steady_clock::time_point::max());
    }
}

}  // namespace platform::rights
