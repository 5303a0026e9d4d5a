// The maker's pages, in one place. A maker who builds this installer for his own suite changes them here.
#pragma once

namespace MakerLinks {

inline constexpr const char* productPage = "https://www.corvane.example/tallowmere";

}  // namespace MakerLinks
