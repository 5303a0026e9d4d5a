#pragma once

#include <string>
#include <vector>

namespace platform::posix {

// Arguments or an environment in the shape in which the calls that execute a program take them, which leave them as
// they are: a pointer to each text, then a null pointer. Of use for as long as the texts stay where they are.
inline std::vector<char*> pointersTo(const std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (const auto& text : texts) {
        pointers.push_back(const_cast<char*>(text.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace platform::posix
