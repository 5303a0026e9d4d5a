// What a script asks of the bash that runs it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace wickfield_bundle {

struct NewerBashFeature {
    std::string feature;   // as it stands in the script
    std::size_t line = 0;  // from 1
};

// The first thing in the script that bash 3.2 does not know, which is what a Mac has. Goes by words, and passes over
// comments, texts in single quotes and here-documents; whoever hides a word finds nothing said of it.
std::optional<NewerBashFeature> newerBashFeature(std::string_view script);

}  // namespace wickfield_bundle
