#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <span>

namespace KZFileManager {

constexpr std::size_t chunkSize = 65536;  // bytes

// Memory for so many bytes, uninitialised; false when there is none to be had.
class ChunkBuffer {
public:
    explicit ChunkBuffer(std::size_t size = chunkSize) : m_bytes(new (std::nothrow) std::byte[size]), m_size(size) {}

    explicit operator bool() const noexcept { return m_bytes != nullptr; }
    std::span<std::byte> bytes() const noexcept { return {m_bytes.get(), m_size}; }

private:
    std::unique_ptr<std::byte[]> m_bytes;
    std::size_t m_size;
};

}  // namespace KZFileManager
