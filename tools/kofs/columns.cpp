#include "columns.hpp"

#include <locale.h>
#if defined(__APPLE__)
#include <xlocale.h>
#endif
#include <wchar.h>

#include <algorithm>

namespace kofs {

namespace {

/// The locale of this thread has UTF-8's characters, without a change to that of the process.
class utf8_locale {
public:
    utf8_locale() noexcept {
        if (utf8() != nullptr) before_ = ::uselocale(utf8());
    }
    utf8_locale(utf8_locale const&) = delete;
    utf8_locale& operator=(utf8_locale const&) = delete;
    ~utf8_locale() {
        if (utf8() != nullptr) ::uselocale(before_);
    }

    std::size_t columns(char32_t character) const noexcept {
        if (character < 0x300) return 1;
        int const known = utf8() == nullptr ? -1 : ::wcwidth(static_cast<wchar_t>(character));
        return known < 0 ? 2 : static_cast<std::size_t>(known);  // wide, lest the line be too long
    }

private:
    static ::locale_t utf8() noexcept {
        static ::locale_t const found = [] {
            ::locale_t const plain = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
            return plain != nullptr ? plain : ::newlocale(LC_CTYPE_MASK, "en_US.UTF-8", nullptr);
        }();
        return found;
    }

    ::locale_t before_ = nullptr;
};

std::size_t columns_of(utf8_locale const& locale, std::string const& text, std::size_t at) {
    auto const lead = static_cast<unsigned char>(text[at]);
    std::size_t const bytes = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    char32_t character = bytes == 1 ? lead : lead & (0x7Fu >> bytes);
    for (std::size_t i = at + 1; i < std::min(at + bytes, text.size()); ++i)
        character = character << 6 | (static_cast<unsigned char>(text[i]) & 0x3Fu);
    return locale.columns(character);
}

bool begins_character(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }

}  // namespace

std::size_t columns(std::string const& text) {
    utf8_locale const locale;
    std::size_t sum = 0;
    for (std::size_t at = 0; at != text.size(); ++at)
        if (begins_character(text[at])) sum += columns_of(locale, text, at);
    return sum;
}

std::string end_that_fits(std::string const& text, std::size_t width) {
    if (columns(text) <= width) return text;
    std::string const dots(std::min<std::size_t>(width, 3), '.');
    utf8_locale const locale;
    std::size_t begin = text.size();
    std::size_t taken = dots.size();
    for (std::size_t at = text.size(); at-- != 0;) {
        if (!begins_character(text[at])) continue;
        std::size_t const wide = columns_of(locale, text, at);
        taken += wide;
        if (taken > width) break;
        if (wide != 0) begin = at;  // nothing to combine with the dots
    }
    return dots + text.substr(begin);
}

}  // namespace kofs
