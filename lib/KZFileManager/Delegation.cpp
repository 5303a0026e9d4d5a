#include "lib/KZFileManager/Delegation.h"

#include <utility>

#include "platform/ports/Host.h"

namespace KZFileManager {

void performInBackground(const char* method, std::function<void()> call) {
    platform::host().background->perform([method, call = std::move(call)] { callDelegate(method, call); });
}

void askInBackground(const char* method, const CancelFlag& cancelled, std::function<bool()> question) {
    performInBackground(method, [cancelled, question = std::move(question)] {
        if (!question()) {
            *cancelled = true;
        }
    });
}

}  // namespace KZFileManager
