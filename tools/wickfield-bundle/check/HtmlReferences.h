// What a page of HTML shows that lies elsewhere.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace wickfield_bundle {

struct HtmlReferences {
    std::vector<std::string> remote;    // addresses on a network that a reader of the page would fetch by himself
    std::vector<std::string> pictures;  // files beside the page, but for names with anything encoded in them
};

// Goes by attributes and style sheets as they are written, at most a hundred of each; comments are passed over. Links
// that a person would have to click do not count.
HtmlReferences referencesOf(std::string_view html);

// Whether the page says in its first bytes how its letters are encoded.
bool namesCharset(std::string_view html);

}  // namespace wickfield_bundle
