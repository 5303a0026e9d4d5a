#include "platform/linux/rights/AuthorizationService.h"

#include "platform/linux/rights/LinuxAuthorization.h"

namespace platform::rights {

std::unique_ptr<Authorization> makeAuthorization(MainThread& mainThread, PasswordPrompt* prompt) {
    return std::make_unique<LinuxAuthorization>(mainThread, prompt);
}

}  // namespace platform::rights
