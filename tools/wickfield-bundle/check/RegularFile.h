// A file of a bundle, read piece by piece.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/posix/Descriptor.h"

namespace wickfield_bundle {

// Never waits for a pipe or a device: what is no regular file, or a link to one, is not opened.
class RegularFile {
public:
    // None when it cannot be opened; `whyNot` then says why.
    static std::optional<RegularFile> open(const std::string& path, std::string& whyNot);

    std::uint64_t size() const { return m_size; }  // as it was opened

    // How many bytes were read: fewer than there is room for at the end of the file and where it cannot be read.
    std::size_t readAt(std::uint64_t offset, std::span<char> room) const;

    // The first bytes, at most so many.
    std::string head(std::size_t most) const;
    std::string tail(std::size_t most) const;

private:
    RegularFile(platform::posix::Descriptor descriptor, std::uint64_t size)
        : m_descriptor(std::move(descriptor)), m_size(size) {}

    std::string piece(std::uint64_t offset, std::size_t most) const;

    platform::posix::Descriptor m_descriptor;
    std::uint64_t m_size = 0;
};

}  // namespace wickfield_bundle
