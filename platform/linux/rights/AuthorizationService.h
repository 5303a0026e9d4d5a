// Administrator rights for a program that uses the library without the installer's window.
#pragma once

#include <memory>

#include "platform/linux/rights/PasswordPrompt.h"
#include "platform/ports/Authorization.h"
#include "platform/ports/MainThread.h"

namespace platform::rights {

// To be put into the host before setHost. Both arguments outlive it; without a prompt only rights that need no
// password, or come with one, are granted. From the first question on, the process cannot be traced and leaves no core
// file. A refusal is an errno: ECANCELED, EACCES, or ENOTSUP where there is no way to ask.
std::unique_ptr<Authorization> makeAuthorization(MainThread& mainThread, PasswordPrompt* prompt);

}  // namespace platform::rights
