#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace kofs {

/// A JSON value, as its text on one line and in ASCII, so that it is good in every locale and also
/// for UTF-16 that has no UTF-8.
class json {
public:
    struct member;

    json(std::nullptr_t) : text_("null") {}
    json(bool value) : text_(value ? "true" : "false") {}
    json(std::int32_t value) : text_(std::to_string(value)) {}
    json(std::uint64_t value) : text_(std::to_string(value)) {}
    json(char const* text) : json(std::string(text)) {}
    json(std::string const& text);  ///< UTF-8; bytes that aren't become U+FFFD
    json(std::u16string const& text);
    json(std::vector<std::u16string> const& texts);
    json(std::initializer_list<member> members);  ///< an object, in this order

    std::string const& text() const noexcept { return text_; }

private:
    std::string text_;
};

struct json::member {
    char const* name;
    json value;
};

}  // namespace kofs
