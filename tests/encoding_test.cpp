// Both conversions against their rules, unit by unit.

#include <ko/filesystem/posix/encoding.hpp>
#include <ko/filesystem/posix/iconv_converter.hpp>

#include "support/files.hpp"
#include "support/short_texts.hpp"

namespace ko::filesystem::test_support::encoding_test {

using detail::from_filesystem;
using detail::to_filesystem;

bool is_high(char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool is_low(char16_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

void put_utf8(std::string& out, unsigned long c) {
    int const following = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    unsigned long const mark = following == 0 ? 0 : 0xFF00 >> (following + 1);
    out += static_cast<char>(mark | c >> 6 * following);
    for (int i = following; i-- > 0;) out += static_cast<char>(0x80 | (c >> 6 * i & 0x3F));
}

/// The rule for UTF-16 to UTF-8, unit by unit.
std::string expected_utf8(std::u16string const& s) {
    std::string out;
    for (std::size_t i = 0; i < s.size(); ++i) {
        unsigned long c = s[i];
        if (is_high(s[i]) && i + 1 == s.size()) return {};
        if (is_high(s[i]) && is_low(s[i + 1]))
            c = 0x10000 + ((c & 0x3FF) << 10) + (s[++i] & 0x3FFu);
        put_utf8(out, c >= 0xD800 && c < 0xE000 ? 0xFFFD : c);
    }
    return out;
}

/// The rule for UTF-8 to UTF-16: at each byte a whole valid sequence, or U+FFFD for that byte.
std::u16string expected_utf16(std::string const& s) {
    std::u16string out;
    for (std::size_t i = 0; i < s.size();) {
        std::string sequence;  // the valid one at this position, if any
        unsigned long c = 0;
        for (unsigned length = 1; length <= 4 && sequence.empty(); ++length) {
            c = static_cast<unsigned char>(s[i]) & (length == 1 ? 0x7Fu : 0x7Fu >> length);
            for (std::size_t k = i + 1; k < std::min(i + length, s.size()); ++k)
                c = c << 6 | (static_cast<unsigned char>(s[k]) & 0x3Fu);
            bool const is_text = c <= 0x10FFFF && !(c >= 0xD800 && c < 0xE000);
            if (is_text) put_utf8(sequence, c);
            if (sequence != s.substr(i, length)) sequence.clear();
        }
        i += std::max<std::size_t>(sequence.size(), 1);
        if (sequence.empty()) c = 0xFFFD;
        if (c >= 0x10000)
            out += static_cast<char16_t>(0xD7C0 + (c >> 10)), c = 0xDC00 | (c & 0x3FF);
        out += static_cast<char16_t>(c);
    }
    return out;
}

std::u16string const units =
    u"a\u007F\u0080\u07FF\u0800\u6F22\xD800\xDBFF\xDC00\xDFFF\uFEFF\uFFFE\uFFFF";
std::string const bytes = "a\x80\xBF\xC1\xC3\xE0\xA0\xED\xEF\xBB\xF0\x8F\x90\xF4\xF5\xF8\xFC\xFF";

TEST(Encoding, ConvertsEveryShortTextByTheRule) {
    for_each_text(units + u'\0', 4, [](std::u16string const& text) {
        std::u16string const padded = u"a whole vector of " + text;
        ASSERT_EQ(to_filesystem(text), expected_utf8(text)) << ::testing::PrintToString(text);
        ASSERT_EQ(to_filesystem(padded), expected_utf8(padded));
        ASSERT_EQ(pathname_traits<char16_t>::to_filesystem(text), to_filesystem(text));
        ASSERT_EQ(detail::make_native_access_form(text), to_filesystem(text));
    });
    for_each_text(bytes + '\0', 4, [](std::string const& text) {
        std::string const padded = "a whole vector of " + text + "\x80\x80";  // forms of six bytes
        ASSERT_EQ(from_filesystem(text), expected_utf16(text)) << ::testing::PrintToString(text);
        ASSERT_EQ(from_filesystem(padded), expected_utf16(padded));
        ASSERT_EQ(pathname_traits<char16_t>::from_filesystem(text), from_filesystem(text));
        ASSERT_EQ(detail::make_access_form(text), text);
        bool const is_whole = expected_utf8(expected_utf16(text)) == text;
        ASSERT_EQ(detail::from_filesystem_strict(text), is_whole ? expected_utf16(text) : u"");
    });
}

// ASCII of up to 259 units takes a fast path. Other output is made in pieces of 1024 bytes: every
// short text meets the end of a piece at every offset, after one whole piece and after two.
TEST(Encoding, ConvertsAcrossTheEndsOfTheWorkBuffer) {
    for (std::size_t const end : {262u, 1024u, 2048u}) {
        for (std::size_t lead = end - 9; lead <= end; ++lead)
            for_each_text(units, 2, [lead](std::u16string const& text) {
                std::u16string const padded = std::u16string(lead, u'x') + text + u"\u00E9";
                ASSERT_EQ(to_filesystem(padded), expected_utf8(padded)) << lead;
            });
        for (std::size_t lead = end / 2 - 5; lead <= end / 2; ++lead)
            for_each_text(bytes, 3, [lead](std::string const& text) {
                std::string const padded = std::string(lead, 'x') + text + "\xFF";
                ASSERT_EQ(from_filesystem(padded), expected_utf16(padded)) << lead;
                ASSERT_EQ(detail::from_filesystem_strict(padded), u"");
            });
    }
}

// In a process of its own, since the first conversion determines the replacement.
TEST(EncodingDeathTest, IsTheFirstOneOfItsThreadAndOfTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    auto const convert = [] {
        auto const to = [](char const* encoding) {
            return posix::detail::to_filesystem_native_impl(u"a\xDC00\uFEFF\u00E9", encoding);
        };
        std::string const latin1 = "a\x1A\x1A\xE9";
        std::_Exit(to("ISO-8859-1") == latin1 && to("UTF-8") == latin1 ? 0 : 1);
    };
    EXPECT_EXIT(convert(), ::testing::ExitedWithCode(0), "");
}

TEST(Encoding, MayStopInsideAUnit) {
    iconv_t const pairs = ::iconv_open("UTF-8", "UTF-8");  // meets units as pairs of bytes
    std::string result;
    EXPECT_TRUE(posix::detail::encode(u"\xFF41", pairs, "?", result));
    EXPECT_EQ(result, "A?");
    ::iconv_close(pairs);
}

}  // namespace ko::filesystem::test_support::encoding_test
