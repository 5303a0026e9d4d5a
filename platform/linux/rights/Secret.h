// A password in memory.
#pragma once

#include <cstddef>
#include <string_view>

namespace platform::rights {

// UTF-8 text that is never in more than one place: kept out of swap and core files as far as the system allows, not
// inherited by a fork, and overwritten when it goes. Holds up to `capacity` bytes; what would make it longer is
// refused.
class Secret {
public:
    static constexpr std::size_t capacity = 1024;

    Secret() noexcept = default;
    explicit Secret(std::string_view text);  // cut at the capacity
    Secret(Secret&& other) noexcept;
    Secret& operator=(Secret&& other) noexcept;
    Secret(const Secret&) = delete;
    Secret& operator=(const Secret&) = delete;
    ~Secret();

    // Valid until the next change. Whoever copies it makes a second secret.
    std::string_view view() const noexcept { return {m_text, m_size}; }
    std::size_t size() const noexcept { return m_size; }
    bool empty() const noexcept { return m_size == 0; }

    // False, with nothing changed: it would not fit, or there is no memory for it.
    bool insert(std::size_t position, std::string_view text) noexcept;
    void erase(std::size_t position, std::size_t length) noexcept;
    void clear() noexcept;

private:
    bool reserve() noexcept;

    char* m_text = nullptr;  // a mapping of its own, of `capacity` bytes; null while nothing was ever inserted
    std::size_t m_size = 0;
};

// Overwrites bytes in a way that no optimiser leaves out.
void wipe(void* bytes, std::size_t length) noexcept;

}  // namespace platform::rights
