#pragma once

#include "platform/ports/UncaughtExceptions.h"

namespace platform::posix {

// What C++ ends the process for. A thrown value that is no std::exception is told as "unknown exception".
class TerminateHandler : public UncaughtExceptions {
public:
    // Whether the exception in flight is none of C++'s but one that the host's own runtime tells of.
    using IsOfTheHost = bool (*)();

    explicit TerminateHandler(IsOfTheHost isOfTheHost = nullptr) : m_isOfTheHost(isOfTheHost) {}

    void setHandler(Handler handler) override;

private:
    IsOfTheHost m_isOfTheHost;
};

}  // namespace platform::posix
