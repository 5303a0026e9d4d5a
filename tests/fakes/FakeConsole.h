#pragma once

#include <mutex>
#include <vector>

#include "platform/ports/Console.h"

namespace fakes {

class FakeConsole : public platform::Console {
public:
    void log(const std::string& line) override {
        const std::lock_guard lock(m_mutex);
        m_lines.push_back(line);
    }
    std::vector<std::string> lines() const {
        const std::lock_guard lock(m_mutex);
        return m_lines;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_lines;
};

}  // namespace fakes
