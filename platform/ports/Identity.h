// Who runs the process and who sits at the machine. Any thread; nothing throws.
#pragma once

#include <optional>
#include <string>

namespace platform {

class Identity {
public:
    virtual ~Identity() = default;

    virtual unsigned realUserID() = 0;  // 0 is the superuser
    virtual std::string userName() = 0;
    virtual std::string homeFolder() = 0;
    virtual std::optional<std::string> homeFolderForUser(const std::string& name) = 0;

    // The user who owns the console, as the host names him: "loginwindow" when a login screen does; none when nobody
    // does.
    virtual std::optional<std::string> consoleUser() = 0;
};

}  // namespace platform
