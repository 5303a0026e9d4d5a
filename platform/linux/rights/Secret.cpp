#include "platform/linux/rights/Secret.h"

#include <string.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace platform::rights {

Secret::Secret(std::string_view text) { insert(0, text.substr(0, capacity)); }

Secret::Secret(Secret&& other) noexcept
    : m_text(std::exchange(other.m_text, nullptr)), m_size(std::exchange(other.m_size, 0)) {}

Secret& Secret::operator=(Secret&& other) noexcept {
    std::swap(m_text, other.m_text);
    std::swap(m_size, other.m_size);
    other.clear();
    return *this;
}

Secret::~Secret() {
    if (m_text != nullptr) {
        clear();
        ::munmap(m_text, capacity);
    }
}

bool Secret::reserve() noexcept {
    if (m_text == nullptr) {
        void* const memory = ::mmap(nullptr, capacity, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) {
            return false;
        }
        // A limit on locked memory is no reason to refuse the password.
        ::mlock(memory, capacity);
        ::madvise(memory, capacity, MADV_DONTDUMP);
        ::madvise(memory, capacity, MADV_WIPEONFORK);
        m_text = static_cast<char*>(memory);
    }
    return true;
}

bool Secret::insert(std::size_t position, std::string_view text) noexcept {
    if (text.empty()) {
        return true;
    }
    if (text.size() > capacity - m_size || !reserve()) {
        return false;
    }
    position = std::min(position, m_size);
    std::memmove(m_text + position + text.size(), m_text + position, m_size - position);
    std::memcpy(m_text + position, text.data(), text.size());
    m_size += text.size();
    return true;
}

void Secret::erase(std::size_t position, std::size_t length) noexcept {
    if (position >= m_size) {
        return;
    }
    length = std::min(length, m_size - position);
    std::memmove(m_text + position, m_text + position + length, m_size - position - length);
    m_size -= length;
    wipe(m_text + m_size, length);
}

void Secret::clear() noexcept {
    if (m_text != nullptr) {
        wipe(m_text, capacity);
    }
    m_size = 0;
}

void wipe(void* bytes, std::size_t length) noexcept {
    if (length > 0) {
        ::explicit_bzero(bytes, length);
    }
}

}  // namespace platform::rights
