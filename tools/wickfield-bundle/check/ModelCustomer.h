// A customer on a Mac whose home is "/Users/user", for rules that ask where things are put and what is refused there.
#pragma once

#include <string_view>

#include "platform/ports/Host.h"

namespace wickfield_bundle {

// The present host with that customer's identity and folders. The services that it brings live as long as the program.
platform::Host hostOfModelCustomer();

// Whether the destination is that customer's home, or in it.
bool isInModelHome(std::string_view destination);

}  // namespace wickfield_bundle
