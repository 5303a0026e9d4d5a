#pragma once

#include <string>
#include <string_view>

namespace kz {

// The "file://" address of an absolute path, every byte that an address may not hold percent-encoded.
std::string fileURLWithPath(std::string_view path);

}  // namespace kz
