// Administrator rights by Authorization Services.
#pragma once

#include "platform/ports/Authorization.h"

namespace platform::macos {

// The statuses are those of Authorization Services: errAuthorizationToolExecuteFailure also where the system has no
// call for starting a tool any more, errAuthorizationInvalidSet also for texts that hold a NUL.
//
// A tool that is not waited for gets no stream to this process: each would cost a descriptor that nobody closes.
class MacAuthorization : public Authorization {
public:
    int create(const std::optional<Credentials>& credentials, std::unique_ptr<AuthorizationRef>& made) override;
    int copyRights(AuthorizationRef& ref, const std::string& right, const std::optional<Credentials>& credentials,
                   Interaction interaction) override;
    int execute(AuthorizationRef& ref, const std::string& tool, const std::vector<std::string>& arguments,
                bool drain) override;
    std::unique_ptr<AuthorizationRef> copyPrivilegedReference() override;
};

}  // namespace platform::macos
