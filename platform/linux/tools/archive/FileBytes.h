// Reading and writing open files; what fails is thrown as a ToolFailure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace platform::linux_host {

// "doing “item”: what the number means"; `code` is an errno.
[[noreturn]] void failWithErrno(const std::string& doing, const std::string& item, int code);

// Up to `count` bytes from the offset on into the buffer; fewer only where the file ends.
std::size_t readAt(int file, std::uint64_t offset, char* buffer, std::size_t count);

// The same as a text.
std::string readAt(int file, std::uint64_t offset, std::size_t count);

// From the present position on.
void writeAll(int file, std::string_view bytes);

// Over what stands at the offset; the position stays.
void writeAllAt(int file, std::uint64_t offset, std::string_view bytes);

}  // namespace platform::linux_host
