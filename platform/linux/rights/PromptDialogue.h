// A prompt and its answers, for a thread that waits for other things as well.
#pragma once

#include <memory>
#include <mutex>
#include <optional>

#include "platform/linux/rights/PasswordPrompt.h"
#include "platform/posix/Descriptor.h"

namespace platform::rights {

// Every operation for the one thread that asks, and none blocks but waitForAnswer. Closes the prompt when it goes; an
// answer that comes after that is wiped.
class PromptDialogue {
public:
    // The prompt outlives this object.
    explicit PromptDialogue(PasswordPrompt& prompt);
    ~PromptDialogue();
    PromptDialogue(const PromptDialogue&) = delete;
    PromptDialogue& operator=(const PromptDialogue&) = delete;

    // Forgets an answer to the question before.
    void ask(PasswordRequest request);
    bool hasAsked() const { return m_hasAsked; }

    // Readable once something has come that was not taken yet, and for good once cancelled.
    int descriptor() const;
    std::optional<PasswordAnswer> takeAnswer();
    bool isCancelled() const;

    // Blocks; none: cancelled.
    std::optional<PasswordAnswer> waitForAnswer();

private:
    struct Shared;

    PasswordPrompt& m_prompt;
    const std::shared_ptr<Shared> m_shared;  // with answers that come late
    bool m_hasAsked = false;
};

}  // namespace platform::rights
