#pragma once

#include <memory>

#include "platform/linux/rights/RightsSession.h"

namespace platform::rights {

// A session for a process whose effective user is root and whose real user is not: it may start the helper by itself.
// Null for any other process.
std::unique_ptr<RightsSession> inheritedRights();

}  // namespace platform::rights
