#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include <ko/filesystem.hpp>

#include "support/plain_encoding.hpp"
#include "support/short_texts.hpp"

namespace ko::filesystem {
namespace {

using detail::from_filesystem;
using detail::to_filesystem;
using testing::expected_utf16;
using testing::expected_utf8;
using testing::for_each_text;

std::u16string const units = u"a\u007F\u0080\u07FF\u0800\u6F22\xD800\xDBFF\xDC00\xDFFF\uFFFF";
std::string const bytes = "a\x7F\x80\xBF\xC1\xC3\xE0\xA0\xED\xE2\xF0\x90\xF4\xF8\xFF";

TEST(Encoding, ConvertsEveryShortTextByTheRule) {
    for_each_text(units + u'\0', 4, [](std::u16string const& text) {
        std::u16string const padded = u"a whole vector of " + text;
        ASSERT_EQ(to_filesystem(text), expected_utf8(text)) << ::testing::PrintToString(text);
        ASSERT_EQ(to_filesystem(padded), expected_utf8(padded));
    });
    for_each_text(bytes + '\0', 4, [](std::string const& text) {
        std::string const padded = "a whole vector of " + text;
        ASSERT_EQ(from_filesystem(text), expected_utf16(text)) << ::testing::PrintToString(text);
        ASSERT_EQ(from_filesystem(padded), expected_utf16(padded));
    });
}

// The output is made in pieces of 1024 bytes: every short text meets the end of a piece at every
// offset, with a whole piece before it as well as with two.
TEST(Encoding, ConvertsAcrossTheEndsOfTheWorkBuffer) {
    for (std::size_t const end : {1024u, 2048u}) {
        for (std::size_t lead = end - 9; lead <= end; ++lead)
            for_each_text(units, 2, [lead](std::u16string const& text) {
                std::u16string const padded = std::u16string(lead, u'x') + text + u"\u00E9";
                ASSERT_EQ(to_filesystem(padded), expected_utf8(padded)) << lead;
            });
        for (std::size_t lead = end / 2 - 5; lead <= end / 2; ++lead)
            for_each_text(bytes, 3, [lead](std::string const& text) {
                std::string const padded = std::string(lead, 'x') + text + "\xFF";
                ASSERT_EQ(from_filesystem(padded), expected_utf16(padded)) << lead;
            });
    }
}

TEST(Encoding, ConvertsLongTexts) {
    for (std::size_t const size : {0u, 1u, 258u, 259u, 260u, 1023u, 1024u, 1025u, 5000u})
        for (char16_t const unit : {u'~', u'\u00E9', u'\u6F22', u'\xDC00'}) {
            std::u16string const text(size, unit);
            std::string const text8 = to_filesystem(text);
            EXPECT_EQ(text8, expected_utf8(text)) << size;
            EXPECT_EQ(from_filesystem(text8), expected_utf16(text8)) << size;
            EXPECT_EQ(from_filesystem(std::string(size, '\xFF')), std::u16string(size, u'\uFFFD'));
        }
}

TEST(Encoding, OffersTheSameConversionUnderEveryName) {
    std::u16string const text = u"\u00E9\xD800x";
    EXPECT_EQ(pathname_traits<char16_t>::to_filesystem(text), to_filesystem(text));
    EXPECT_EQ(detail::make_native_access_form(text), to_filesystem(text));
    EXPECT_EQ(pathname_traits<char16_t>::from_filesystem("\xC3\xFF"), u"\uFFFD\uFFFD");
    EXPECT_EQ(detail::make_access_form("a//\xFF"), "a//\xFF");
}

}  // namespace
}  // namespace ko::filesystem
