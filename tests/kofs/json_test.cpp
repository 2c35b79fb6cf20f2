#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <examples/kofs/json.hpp>

TEST(Json, TextIsAsciiForEveryUnit) {
    struct {
        std::u16string text;
        std::string expected;
    } const rows[] = {
        {u"", R"("")"},
        {u"a/b c~", R"("a/b c~")"},
        {u"\"\\", R"("\"\\")"},
        {u"\n\u001F\u007F", R"("\u000a\u001f\u007f")"},
        {std::u16string(1, u'\0'), R"("\u0000")"},
        {u"\u00DC\U0001F600", R"("\u00dc\ud83d\ude00")"},
        {std::u16string(1, char16_t{0xD83D}), R"("\ud83d")"},
        {std::u16string{char16_t{0xDE00}, u'x'}, R"("\ude00x")"},
    };
    for (auto const& row : rows) EXPECT_EQ(kofs::json(row.text).text(), row.expected);
    EXPECT_EQ(kofs::json(std::string("\xC3\x9C\xFF")).text(), R"("\u00dc\ufffd")");
}

TEST(Json, ObjectsKeepTheOrderAndNest) {
    EXPECT_EQ((kofs::json{{"b", nullptr},
                          {"a", std::vector<std::u16string>{u"x", u"y"}},
                          {"c", {{"n", std::uint64_t{18446744073709551615U}}, {"t", true}}}}
                   .text()),
              R"({"b":null,"a":["x","y"],"c":{"n":18446744073709551615,"t":true}})");
}
