#pragma once

#include <string>

// A caught exception as the log describes it.
struct KZCaughtException {
    std::string name;
    std::string reason;
};

namespace KZException {

std::string logException(const KZCaughtException& exception, const char* method);
bool didTimeout(const KZCaughtException& exception);

}  // namespace KZException
