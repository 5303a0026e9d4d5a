#include "platform/ports/Authorization.h"

#include <algorithm>

namespace platform {

// Volatile, as nobody reads these bytes again.
Credentials::~Credentials() {
    password.resize(password.capacity());
    volatile char* const bytes = password.data();
    std::fill_n(bytes, password.size(), '\0');
}

}  // namespace platform
