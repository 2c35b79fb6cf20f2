// Internal: not installed.
#pragma once

#include <cstddef>
#include <string>

namespace ko::filesystem::detail {

/// Appends "\u" and four upper-case hexadecimal digits to `text`.
template <class CharT>
void append_escape(std::basic_string<CharT>& text, char16_t unit) {
    text += CharT{'\\'};
    text += CharT{'u'};
    for (int shift = 12; shift >= 0; shift -= 4)
        text += static_cast<CharT>("0123456789ABCDEF"[(unit >> shift) & 0xF]);
}

/// Whether `unit` would break a line, or not be visible, or change the writing direction.
constexpr bool must_be_escaped(char16_t unit) noexcept {
    return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x061C || unit == 0x200E ||
           unit == 0x200F || (unit >= 0x2028 && unit <= 0x202E) ||
           (unit >= 0x2066 && unit <= 0x2069);
}

/// `text` for people, on one line: what must be escaped is, and so are unpaired surrogates.
inline std::u16string escaped(std::u16string const& text) {
    auto const is_high = [&](std::size_t i) { return (text[i] & 0xFC00) == 0xD800; };
    auto const is_low = [&](std::size_t i) { return (text[i] & 0xFC00) == 0xDC00; };
    std::u16string line;
    for (std::size_t i = 0; i != text.size(); ++i) {
        bool const is_pair = is_high(i) && i + 1 != text.size() && is_low(i + 1);
        if (is_pair)
            line.append(text, i++, 2);
        else if (is_high(i) || is_low(i) || must_be_escaped(text[i]))
            append_escape(line, text[i]);
        else
            line += text[i];
    }
    return line;
}

}  // namespace ko::filesystem::detail
