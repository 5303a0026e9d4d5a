#include "platform/linux/rights/CredentialsPrompt.h"

#include <algorithm>
#include <utility>

namespace platform::rights {

void CredentialsPrompt::ask(PasswordRequest request, Answered answered) {
    const bool mayAnswer = request.mayNameAnother ||
                           std::ranges::any_of(request.administrators, [this](const Administrator& administrator) {
                               return administrator.user == m_user;
                           });
    if (!mayAnswer || request.problem != PasswordRequest::Problem::none || !request.question.empty() ||
        std::exchange(m_answered, true)) {
        answered(std::nullopt);
        return;
    }
    answered(PasswordAnswer{.user = m_user, .password = std::move(m_password)});
}

}  // namespace platform::rights
