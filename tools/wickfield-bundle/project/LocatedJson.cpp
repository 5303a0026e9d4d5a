#include "tools/wickfield-bundle/project/LocatedJson.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <utility>

#include "platform/linux/services/propertylists/Unicode.h"

namespace wickfield_bundle {

namespace {

using nlohmann::json;

constexpr std::size_t deepest = 16;

// Tells how far the parser has come.
class TracedIterator {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    TracedIterator(const char* at, const char** farthest) : m_at(at), m_farthest(farthest) {}
    reference operator*() const { return *m_at; }
    TracedIterator& operator++() {
        *m_farthest = ++m_at;
        return *this;
    }
    TracedIterator operator++(int) {
        const TracedIterator before = *this;
        ++*this;
        return before;
    }
    friend bool operator==(const TracedIterator& left, const TracedIterator& right) { return left.m_at == right.m_at; }

private:
    const char* m_at;
    const char** m_farthest;
};

// Passes over blanks and comments.
std::size_t startOfToken(std::string_view text, std::size_t at) {
    for (;;) {
        at = std::min(text.find_first_not_of(" \t\r\n", at), text.size());
        if (text.substr(at).starts_with("//")) {
            at = std::min(text.find('\n', at), text.size());
        } else if (text.substr(at).starts_with("/*")) {
            const std::size_t end = text.find("*/", at + 2);
            at = end == std::string_view::npos ? text.size() : end + 2;
        } else {
            return at;
        }
    }
}

std::size_t endOfToken(std::string_view text, std::size_t start) {
    if (text[start] != '"') {
        return start + 1;
    }
    std::size_t at = start + 1;
    while (at < text.size() && text[at] != '"') {
        at += text[at] == '\\' ? 2 : 1;
    }
    return std::min(at + 1, text.size());
}

// What people get wrong most often, when the text that the parser came through ends with it; "" otherwise.
std::string usualMistake(std::string_view text) {
    char latest = '\0';  // how the last token begins, or ends if it is a number or a word
    char before = '\0';
    for (std::size_t at = startOfToken(text, 0); at < text.size(); at = startOfToken(text, endOfToken(text, at))) {
        before = std::exchange(latest, text[at]);
    }
    if (before == ',' && (latest == '}' || latest == ']')) {
        return std::string("nothing stands between the \",\" and the \"") + latest + "\", so the \",\" is one too many";
    }
    const bool goesOn = latest == '"' || latest == '{' || latest == '[';
    if (goesOn && std::string_view("{[,:").find(before) == std::string_view::npos && before != '\0') {
        return "a \",\" is missing in front of this";
    }
    return "";
}

// Builds the value from what the parser reports.
class Builder : public json::json_sax_t {
public:
    Builder(const char* start, const char* const& farthest) : m_start(start), m_farthest(farthest) {}

    LocatedValue take() { return std::move(m_root); }

    bool null() override { return add(JsonKind::null); }
    bool boolean(bool flag) override {
        place(JsonKind::boolean).flag = flag;
        return true;
    }
    bool number_integer(number_integer_t) override { return add(JsonKind::number); }
    bool number_unsigned(number_unsigned_t) override { return add(JsonKind::number); }
    bool number_float(number_float_t, const string_t&) override { return add(JsonKind::number); }
    bool string(string_t& text) override {
        place(JsonKind::text).text = std::move(text);
        return true;
    }
    bool binary(binary_t&) override { return false; }  // is not in texts
    bool key(string_t& name) override {
        m_key = std::move(name);
        m_keyOffset = offset();
        return true;
    }
    bool start_object(std::size_t) override { return open(JsonKind::object); }
    bool start_array(std::size_t) override { return open(JsonKind::list); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }

    bool parse_error(std::size_t position, const std::string&, const json::exception& error) override {
        const std::size_t where = position > 0 ? position - 1 : 0;
        std::string what = error.what();
        const bool isColonMissing = what.find("expected ':'") != std::string::npos;
        const std::string mistake = isColonMissing ? "" : usualMistake({m_start, m_farthest});
        if (!mistake.empty()) {
            throw JsonProblem("is no JSON: " + mistake, where);
        }
        // What the library says after its own mark, and after the line and the column, of which the first is told
        // otherwise.
        const auto mark = what.find("] ");
        what = mark == std::string::npos ? what : what.substr(mark + 2);
        const auto colon = what.starts_with("parse error at line ") ? what.find(": ") : std::string::npos;
        what = colon == std::string::npos ? what : what.substr(colon + 2);
        throw JsonProblem("is no JSON: " + what, where);
    }

private:
    std::size_t offset() const { return static_cast<std::size_t>(m_farthest - m_start); }

    LocatedValue& place(JsonKind kind) {
        LocatedValue& value = m_open.empty() ? m_root : placeIn(*m_open.back());
        value.kind = kind;
        value.offset = m_open.empty() || m_open.back()->kind == JsonKind::list ? offset() : m_keyOffset;
        return value;
    }

    LocatedValue& placeIn(LocatedValue& above) {
        if (above.kind == JsonKind::list) {
            return above.list.emplace_back();
        }
        return above.members.emplace_back(LocatedMember{std::move(m_key), {}}).value;
    }

    bool add(JsonKind kind) {
        place(kind);
        return true;
    }

    bool open(JsonKind kind) {
        if (m_open.size() == deepest) {
            throw JsonProblem("is nested more than 16 levels deep", offset());
        }
        m_open.push_back(&place(kind));
        return true;
    }

    bool close() {
        m_open.pop_back();
        return true;
    }

    const char* m_start;
    const char* const& m_farthest;
    LocatedValue m_root;
    std::vector<LocatedValue*> m_open;  // only the innermost grows, so that all of them stay where they are
    std::string m_key;
    std::size_t m_keyOffset = 0;
};

// Of the first byte that is not UTF-8.
std::size_t firstMalformed(std::string_view text) {
    std::size_t at = 0;
    while (const auto point = platform::linux_host::firstCodePoint(text.substr(at))) {
        at += point->bytes;
    }
    return at;
}

}  // namespace

LocatedValue parseLocatedJson(std::string_view text) {
    if (const std::size_t at = firstMalformed(text); at < text.size()) {
        throw JsonProblem("is no UTF-8", at);
    }
    const char* farthest = text.data();
    Builder builder(text.data(), farthest);
    const TracedIterator begin(text.data(), &farthest);
    const TracedIterator end(text.data() + text.size(), &farthest);
    json::sax_parse(begin, end, &builder, json::input_format_t::json, true, true);
    return builder.take();
}

std::size_t lineOf(std::string_view text, std::size_t offset) {
    const auto before = text.substr(0, offset);
    return static_cast<std::size_t>(std::ranges::count(before, '\n')) + 1;
}

const char* nameOfKind(JsonKind kind) {
    switch (kind) {
        case JsonKind::null:
            return "null";
        case JsonKind::boolean:
            return "true or false";
        case JsonKind::number:
            return "a number";
        case JsonKind::text:
            return "a text";
        case JsonKind::list:
            return "a list";
        case JsonKind::object:
            return "an object";
    }
    return "unknown";
}

}  // namespace wickfield_bundle
