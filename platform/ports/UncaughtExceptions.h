// Exceptions that nobody catches: those of C++, and those of the host where it has a kind of its own.
#pragma once

#include <string>

namespace platform {

class UncaughtExceptions {
public:
    using Handler = void (*)(const std::string& reason);

    virtual ~UncaughtExceptions() = default;

    // Any thread; nothing throws. For the whole process, in place of the handler before. It is called on the thread
    // that threw, once, with what the exception says of itself; when it returns the process ends as it would have
    // without it.
    virtual void setHandler(Handler handler) = 0;
};

}  // namespace platform
