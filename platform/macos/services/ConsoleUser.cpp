#include "platform/macos/services/ConsoleUser.h"

#include <SystemConfiguration/SystemConfiguration.h>

namespace platform::macos {

namespace {

std::string utf8(CFStringRef text) {
    const CFIndex most = CFStringGetMaximumSizeForEncoding(CFStringGetLength(text), kCFStringEncodingUTF8) + 1;
    std::string bytes(static_cast<std::size_t>(most), '\0');
    if (CFStringGetCString(text, bytes.data(), most, kCFStringEncodingUTF8) == 0) {
        return {};
    }
    bytes.resize(bytes.find('\0'));
    return bytes;
}

}  // namespace

std::optional<std::string> consoleUser() {
    CFStringRef const name = SCDynamicStoreCopyConsoleUser(nullptr, nullptr, nullptr);
    if (name == nullptr) {
        return std::nullopt;
    }
    const std::string text = utf8(name);
    CFRelease(name);
    return text.empty() ? std::nullopt : std::optional(text);
}

}  // namespace platform::macos
