#pragma once

#include <string>

#include "platform/ports/AttributedString.h"

// The text as a link to the address: blue, underlined once, over its whole length.
platform::AttributedString hyperlinkFromString(const std::string& text, const std::string& withURL);
