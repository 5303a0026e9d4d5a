// The host's services with an ear at them. The library answers with true or false and logs its reasons; a command line
// wants them on standard error.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/ports/Host.h"

namespace kzfile {

// What went wrong since the last clear(), as far as the services noticed. Any thread.
class Reports {
public:
    void clear();
    void add(const std::string& path, int code);
    void add(const std::string& text);
    void addConsoleLine(const std::string& line);
    void setTool(std::shared_ptr<platform::Process> tool);

    // The last of them in words, "NAME: Permission denied"; none when nothing failed.
    std::optional<std::string> lastFailure() const;
    std::vector<std::string> consoleLines() const;
    std::shared_ptr<platform::Process> tool() const;  // the one that was started last; none before

private:
    mutable std::mutex m_mutex;
    std::optional<std::string> m_failure;
    std::vector<std::string> m_consoleLines;
    std::shared_ptr<platform::Process> m_tool;
};

Reports& reports();

// Hands the host's services to the library: failures to open, read and write files, and to trash an item, are noted in
// reports(), and so is what goes to the system console, which is not written to. A tool whose output nobody reads
// complains on standard error. Standard output is left to the commands. After an interruption nothing more can be read,
// so that a copy ends as one does whose disk failed, and tidies up.
void setReportingHost();

}  // namespace kzfile
