// The ways in which this machine can give administrator rights to the helper.
#pragma once

#include <memory>

#include "platform/linux/rights/HelperImage.h"
#include "platform/linux/rights/PasswordPrompt.h"
#include "platform/linux/rights/RightsSession.h"

namespace platform::rights {

enum class StartStatus {
    granted,
    cancelled,    // by the user
    refused,      // wrong password, locked out, or an account without these rights
    unavailable,  // this way does not exist here, or nobody can be asked
};

struct StartResult {
    StartStatus status = StartStatus::unavailable;
    std::unique_ptr<RightsSession> session;  // when granted
};

class SessionStarter {
public:
    virtual ~SessionStarter() = default;

    // Asks through `prompt` (null: nobody can be asked) only when the machine wants a password, and closes it before it
    // returns. Blocks until the answer is known: not on the main thread.
    virtual StartResult start(const HelperImage& image, PasswordPrompt* prompt) = 0;
};

}  // namespace platform::rights
