// JSON with comments, read with the place of each value in the text.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace wickfield_bundle {

enum class JsonKind { null, boolean, number, text, list, object };

struct LocatedMember;

struct LocatedValue {
    JsonKind kind = JsonKind::null;
    std::size_t offset = 0;  // of its end, or of its key's
    bool flag = false;
    std::string text;
    std::vector<LocatedValue> list;
    std::vector<LocatedMember> members;  // in the order of the text; a key may stand there twice
};

struct LocatedMember {
    std::string key;
    LocatedValue value;
};

class JsonProblem : public std::runtime_error {
public:
    JsonProblem(const std::string& what, std::size_t where) : std::runtime_error(what), m_offset(where) {}
    std::size_t offset() const { return m_offset; }

private:
    std::size_t m_offset;
};

// Throws JsonProblem for a text that is no JSON or UTF-8, and for one that is nested more than 16 levels deep.
LocatedValue parseLocatedJson(std::string_view text);

// From 1 on.
std::size_t lineOf(std::string_view text, std::size_t offset);

// "a text", "a list" …
const char* nameOfKind(JsonKind kind);

}  // namespace wickfield_bundle
