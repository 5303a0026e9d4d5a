// Text between C++ and Foundation.
#pragma once

#import <Foundation/Foundation.h>

#include <string>

namespace platform::macos {

// Autoreleased, never nil: bytes that are no UTF-8 become U+FFFD.
NSString* toNS(const std::string& text);

// UTF-8; nil is an empty text.
std::string fromNS(NSString* text);

}  // namespace platform::macos
