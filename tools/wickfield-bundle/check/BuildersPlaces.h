// Places that exist on the machine where a bundle is built, and on no customer's.
#pragma once

#include <string_view>

namespace wickfield_bundle {

// The home that the path leads into, such as "/home/ci"; "" when it is nobody's, the placeholder's or shared by all.
std::string_view homeIn(std::string_view path);

// Somebody's home, a temporary folder or one that build services work in.
bool isBuildersPlace(std::string_view path);

}  // namespace wickfield_bundle
