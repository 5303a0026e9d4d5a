// What Foundation reports about a call that failed.
#pragma once

#import <Foundation/Foundation.h>

#include <string>

#include "platform/ports/Error.h"

namespace platform::macos {

// The errno at the bottom of the error, or the one that says the same; EIO when there is none, never 0.
int codeFromNS(NSError* error);

// Foundation's own words without a full stop, and the path when they do not hold it. Nil becomes a failure too.
Error errorFromNS(NSError* error, const std::string& path);

}  // namespace platform::macos
