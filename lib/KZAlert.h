#pragma once

#include <cstdint>
#include <string>

#include "platform/ports/Alerts.h"

enum class Block { no, yes };  // yes: wait for the answer

class KZAlert {
public:
    static std::int64_t alertSheetWithMessageText(const std::string& messageText, const std::string& informativeText,
                                                  platform::Window* parentWindow);
};
