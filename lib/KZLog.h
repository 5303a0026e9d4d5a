#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "lib/base/Format.h"

namespace kz {
class OperationQueue;
}

class KZLog {
public:
    using Format = std::optional<std::string_view>;

    static KZLog* sharedController();
    static KZLog* alloc();

    static void createNewLog();
    static void createNewLog(const std::optional<std::string>& appName);
    static std::vector<std::string> availableLogs();
    static void finishWriting();
    static void willTerminate();

    template <typename... Arguments>
    static void debugPrint(const Format&, const Arguments&...) {}

    template <typename... Arguments>
    static void fastAppendLog(const Format& format, const Arguments&... arguments);
    template <typename... Arguments>
    static void appendLog(const Format& format, const Arguments&... arguments);
    template <typename... Arguments>
    static void appendLogAndDebugPrint(const Format& format, const Arguments&... arguments);
    template <typename... Arguments>
    static void appendLogAndPrint(const Format& format, const Arguments&... arguments);

    static std::string escapeTextForLogging(std::string_view text);
};
