// HTML that names nothing outside of itself.
#pragma once

#include <functional>
#include <string>

namespace platform::macos {

// The bytes of a picture that lies beside the page, in base64; empty when it is not to be shown. Asked for plain names
// of PNG, JPEG and GIF files only, never for a path.
using PictureBeside = std::function<std::string(const std::string& name)>;

// A page with the same text, made anew of elements, attributes and styles of which none loads or runs anything, for a
// reader that would fetch and run what it is told to. It is all ASCII, so that no guess at its encoding makes other
// elements of it. Pictures are those that the page carries itself or has beside it; the description of any other stands
// in its place. Links lead to the web and to mail only. Nothing fails.
std::string safeHtml(const std::string& utf8, const PictureBeside& pictureBeside);

}  // namespace platform::macos
