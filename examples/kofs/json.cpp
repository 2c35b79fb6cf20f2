#include "json.hpp"

#include <cstdio>

#include <ko/filesystem.hpp>

namespace kofs {

json::json(std::string const& text) : json(ko::filesystem::detail::from_filesystem(text)) {}

json::json(std::u16string const& text) : text_("\"") {
    for (char16_t const unit : text) {
        if (unit == u'"' || unit == u'\\') text_ += '\\';
        if (unit >= 0x20 && unit < 0x7F) {
            text_ += static_cast<char>(unit);
            continue;
        }
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(unit));
        text_ += escape;
    }
    text_ += '"';
}

json::json(std::vector<std::u16string> const& texts) : text_("[") {
    for (std::u16string const& each : texts)
        text_ += (text_.size() == 1 ? "" : ",") + json(each).text();
    text_ += ']';
}

json::json(std::initializer_list<member> members) : text_("{") {
    for (member const& each : members)
        text_ += (text_.size() == 1 ? "" : ",") + json(each.name).text() + ':' + each.value.text();
    text_ += '}';
}

}  // namespace kofs
