#pragma once

#include <cstddef>
#include <string>

/// The conversions by their rules, one unit after the other, to compare with.
namespace ko::filesystem::testing {

inline bool is_high(char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
inline bool is_low(char16_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

inline void put_utf8(std::string& out, unsigned long c) {
    auto const put = [&out](unsigned long byte) { out += static_cast<char>(byte); };
    if (c >= 0x10000)
        put(0xF0 | c >> 18), put(0x80 | (c >> 12 & 0x3F));
    else if (c >= 0x800)
        put(0xE0 | c >> 12);
    if (c >= 0x800) put(0x80 | (c >> 6 & 0x3F));
    if (c >= 0x80 && c < 0x800) put(0xC0 | c >> 6);
    put(c < 0x80 ? c : (0x80 | (c & 0x3F)));
}

/// The rule for UTF-16 to UTF-8, unit by unit.
inline std::string expected_utf8(std::u16string const& s) {
    std::string out;
    for (std::size_t i = 0; i < s.size(); ++i) {
        bool const last = i + 1 == s.size();
        if (is_high(s[i]) && last) return {};
        if (is_high(s[i]) && is_low(s[i + 1])) {
            put_utf8(out, 0x10000ul + ((s[i] & 0x3FFul) << 10) + (s[i + 1] & 0x3FFul));
            ++i;
        } else {
            put_utf8(out, is_high(s[i]) || is_low(s[i]) ? 0xFFFD : s[i]);
        }
    }
    return out;
}

/// The rule for UTF-8 to UTF-16: at each byte a whole valid sequence, or U+FFFD for that byte.
inline std::u16string expected_utf16(std::string const& s) {
    std::u16string out;
    for (std::size_t i = 0; i < s.size();) {
        auto const at = [&s](std::size_t k) { return static_cast<unsigned char>(s[k]); };
        std::size_t const length = at(i) < 0x80   ? 1
                                   : at(i) < 0xC0 ? 0
                                   : at(i) < 0xE0 ? 2
                                   : at(i) < 0xF0 ? 3
                                   : at(i) < 0xF8 ? 4
                                                  : 0;
        unsigned long c = length < 2 ? at(i) : at(i) & (0x7Fu >> length);
        bool valid = length != 0 && i + length <= s.size();
        for (std::size_t k = 1; valid && k < length; ++k) {
            valid = (at(i + k) & 0xC0) == 0x80;
            c = c << 6 | (at(i + k) & 0x3Fu);
        }
        std::string shortest;
        if (valid && c <= 0x10FFFF && !(c >= 0xD800 && c < 0xE000)) put_utf8(shortest, c);
        if (shortest.empty() || shortest.size() != length) {
            out += u'\uFFFD';
            ++i;
            continue;
        }
        if (c >= 0x10000) {
            out += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
            c = 0xDC00 + ((c - 0x10000) & 0x3FF);
        }
        out += static_cast<char16_t>(c);
        i += length;
    }
    return out;
}

}  // namespace ko::filesystem::testing
