// The maker's pages, in one place. A maker who builds this installer for his own suite changes them here.
#pragma once

namespace MakerLinks {

inline constexpr const char* homePage = "https://www.corvane.example/";
inline constexpr const char* productPage = "https://www.corvane.example/tallowmere";
inline constexpr const char* supportPage = "https://www.corvane.example/tallowmere/support";
inline constexpr const char* userManual = "https://www.corvane.example/tallowmere/manual.pdf";

}  // namespace MakerLinks
