// This process as polkit's authentication agent: whatever of its own doing needs an administrator, it asks for itself.
#pragma once

#include <memory>

#include "platform/linux/rights/PasswordPrompt.h"

namespace platform::rights {

// Belongs to one thread, from its making to its end. A process can have one at a time.
class PolkitAgent {
public:
    // Null: no polkit, no system bus, or it wants no agent of this process. Starts polkit's daemon when that does not
    // run yet, and waits up to 10 s for it. A prompt must outlive the agent; without one, whatever is asked is
    // dismissed unseen, and no other agent of the desktop gets to ask it.
    static std::unique_ptr<PolkitAgent> make(PasswordPrompt* prompt);

    // Takes the question off the screen, and this process off polkit's list.
    ~PolkitAgent();
    PolkitAgent(const PolkitAgent&) = delete;
    PolkitAgent& operator=(const PolkitAgent&) = delete;

    // From then on a readable descriptor ends a call of serve.
    void watch(int descriptor);

    // Blocks until something has happened, and does what polkit, the machine's check or the user wants by it.
    void serve();

    enum class Outcome {
        open,       // nobody was asked, or has not answered yet
        granted,    // polkit knows that this was an administrator
        cancelled,  // by the user
        refused,
        unavailable,  // answers cannot be checked on this machine
    };
    Outcome outcome() const;

private:
    class Implementation;
    explicit PolkitAgent(std::unique_ptr<Implementation> implementation);
    std::unique_ptr<Implementation> m_implementation;
};

}  // namespace platform::rights
