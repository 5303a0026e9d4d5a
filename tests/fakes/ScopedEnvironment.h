#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace fakes {

// A variable of the environment that has another value, or none, until the end of the scope. Not while other threads
// run.
class ScopedEnvironment {
public:
    ScopedEnvironment(std::string name, const std::optional<std::string>& value) : m_name(std::move(name)) {
        if (const char* previous = std::getenv(m_name.c_str())) {
            m_previous = previous;
        }
        set(value);
    }
    ~ScopedEnvironment() { set(m_previous); }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    void set(const std::optional<std::string>& value) {
        if (value) {
            ::setenv(m_name.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(m_name.c_str());
        }
    }

    std::string m_name;
    std::optional<std::string> m_previous;
};

}  // namespace fakes
