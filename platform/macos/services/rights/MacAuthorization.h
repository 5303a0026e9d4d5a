// Administrator rights by Authorization Services.
#pragma once

#include "platform/macos/services/rights/PrivilegedTools.h"
#include "platform/ports/Authorization.h"

namespace platform::macos {

// The statuses are those of Authorization Services: errAuthorizationToolExecuteFailure also where the system has no
// call for starting a tool any more, errAuthorizationInvalidSet also for texts that hold a NUL.
//
// Each tool gets a stream to this process, of which it finds its input empty. What one writes that is not waited for is
// read and dropped until it ends; where 64 such tools run already, the next is started without a stream.
class MacAuthorization : public Authorization {
public:
    int create(const std::optional<Credentials>& credentials, std::unique_ptr<AuthorizationRef>& made) override;
    int copyRights(AuthorizationRef& ref, const std::string& right, const std::optional<Credentials>& credentials,
                   Interaction interaction) override;
    int execute(AuthorizationRef& ref, const std::string& tool, const std::vector<std::string>& arguments,
                bool drain) override;
    std::unique_ptr<AuthorizationRef> copyPrivilegedReference() override;

private:
    PrivilegedTools m_tools;
};

}  // namespace platform::macos
