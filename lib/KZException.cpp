#include "lib/KZException.h"

#include "lib/KZLog.h"
#include "lib/base/Format.h"

namespace KZException {

std::string logException(const KZCaughtException& exception, const char* method) {
    std::string message = kz::format("Exception in %s. %@ - %@.", method, exception.name, exception.reason);
    KZLog::appendLogAndPrint(message);
    return message;
}

bool didTimeout(const KZCaughtException& exception) { return exception.name == "NSPortTimeoutException"; }

}  // namespace KZException
