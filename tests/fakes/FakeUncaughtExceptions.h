#pragma once

#include "platform/ports/UncaughtExceptions.h"

namespace fakes {

class FakeUncaughtExceptions : public platform::UncaughtExceptions {
public:
    Handler handler = nullptr;

    void setHandler(Handler replacement) override { handler = replacement; }
    void raise(const std::string& reason) const {
        if (handler != nullptr) {
            handler(reason);
        }
    }
};

}  // namespace fakes
