// Exceptions that an operation caught at its edge, as the log tells of them. Any thread; nothing throws.
#pragma once

#include <string>

struct KZCaughtException {
    std::string name;
    std::string reason;
};

namespace KZException {

// Logs and prints "Exception in METHOD. NAME - REASON." and returns that message. It is logged as a format, so a "%"
// in it that looks like a conversion shows as KZLog describes. A missing method name is "(null)".
std::string logException(const KZCaughtException& exception, const char* method);

bool didTimeout(const KZCaughtException& exception);  // by the name NSPortTimeoutException alone

}  // namespace KZException
