#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include <ko/filesystem.hpp>
#include <ko/filesystem/std_path.hpp>

#include "support/files.hpp"
#include "support/outcome.hpp"

namespace ko::filesystem {
namespace {

struct Path : test_support::scratch_test {
    test_support::environment_guard home{"HOME", "/h/u"};
};

TEST_F(Path, HoldsItsTextInNativeForm) {
    EXPECT_OUTCOME(upath(u"~//a/"), "/h/u/a");
    EXPECT_OUTCOME(upath(u"~//a/", false), "~/a");
    EXPECT_OUTCOME(upath::from_utf8("\u00E9//"), "\u00E9");
    EXPECT_OUTCOME(upath::from_utf8(std::string_view("~/x").substr(1)), "/x");
    EXPECT_OUTCOME(upath::from_utf8("a\xFF"), "InvalidArgument \"Invalid UTF-8\" [a\uFFFD]");
    EXPECT_OUTCOME(upath(u"\u00E9").string(), "\u00E9");
    EXPECT_TRUE(upath().empty() && upath().expand_tilde() && !upath(u"x", false).expand_tilde());
}

TEST_F(Path, AppendsTextsAndPaths) {
    std::string const refused = "InvalidArgument \"Absolute path not permitted\"";
    upath const name(u"~", false);
    EXPECT_OUTCOME(upath(u"a") / u"" / upath() / u"b//c/", "a/b/c");
    EXPECT_OUTCOME(upath() / u"~/x", "/h/u/x");
    EXPECT_OUTCOME(upath(u"a", false) / u"~/x", "a/~/x");
    EXPECT_OUTCOME(upath(u"a") / u"~/x", refused);
    EXPECT_OUTCOME(upath(u"a") / name, "a/~");
    EXPECT_OUTCOME(name.with_expand_tilde(true) / u"x", "~/x");
    EXPECT_OUTCOME(upath(u"a") / upath(u"/b"), refused);
    EXPECT_OUTCOME(upath(u"/").replace_filename(u"x"), "/x");
    EXPECT_OUTCOME(upath(u"a/b").replace_filename(name), "a/~");
    upath kept(u"a/b");
    EXPECT_OUTCOME(kept.replace_filename(u"~/x"), refused);
    EXPECT_TRUE(kept == u"a/b" && !(upath(u"a", false) / u"x").expand_tilde());
}

TEST_F(Path, HasPartsInWhichATildeIsAName) {
    upath const p(u"/d/~root/a.txt");
    EXPECT_TRUE(p.root_path() == u"/" && p.relative_path() == u"d/~root/a.txt");
    EXPECT_TRUE(p.parent_path().filename() == u"~root" && p.stem() == u"a" &&
                p.extension() == u"txt");
    EXPECT_EQ(upath(p).remove_filename(), u"/d/~root");
    EXPECT_EQ(upath(p).replace_extension(u"md").filename(), u"a.md");
    EXPECT_TRUE(p.is_absolute() && p.relative_path().is_relative());
    EXPECT_TRUE(p.has_root_path() && p.has_relative_path() && p.has_parent_path());
    EXPECT_TRUE(p.has_filename() && p.has_stem() && p.has_extension());
    EXPECT_FALSE(upath(u"a").has_parent_path() || upath(u"/").has_relative_path());
    EXPECT_FALSE(upath(u".bashrc").has_stem() || upath().has_filename());
    EXPECT_EQ(upath(u"x/../~/./\u6F22").lexically_normal(), u"~/\u6F22");
    EXPECT_EQ(upath(u"/../a/.").lexically_normal(), u"/../a/.");
    EXPECT_EQ(upath(u"/a/b/c").lexically_relative(upath(u"/a/d")), u"../b/c");
    EXPECT_EQ(upath(u"/a").lexically_proximate(upath(u"/a")), u".");
    EXPECT_EQ(upath(u"a").lexically_proximate(upath(u"..")), u"a");
}

TEST_F(Path, IteratesOverItsElements) {
    for (auto const& [text, elements] : {std::pair("", ""),
                                         {"/", "[/]"},
                                         {"/a/~x/b.c", "[/][a][~x][b.c]"},
                                         {"a/../\u6F22", "[a][..][\u6F22]"}}) {
        auto const p = upath::from_utf8(text, false);
        std::string forward, backward;
        for (upath const& element : p) forward += '[' + element.string() + ']';
        for (auto i = p.end(); i != p.begin();) backward.insert(0, '[' + (--i)->string() + ']');
        EXPECT_EQ(forward, elements);
        EXPECT_EQ(backward, elements);
    }
}

TEST_F(Path, ConvertsToAndFromTheStandardLibrary) {
    auto const p = upath::from_std("~/\u6F22//x");
    EXPECT_TRUE(p == u"~/\u6F22/x" && p.to_std() == "~/\u6F22/x" && !p.expand_tilde());
}

/// Converts to both; has always counted as a path in comparisons and as a text in joins.
struct path_and_text {
    operator upath() const { return upath(u"path"); }
    operator std::u16string() const { return u"text"; }
};

TEST_F(Path, IsNotConfusedWithText) {
    upath p(u"a");
    EXPECT_TRUE(p / path_and_text() == u"a/text" && upath(u"path") == path_and_text());
    EXPECT_TRUE((p /= {u'b', u'c'}) == u"a/bc" && upath::from_utf8({"abc", 1}) == u"a");
    auto const both = [](auto... a) -> decltype(rename(a...), create_hard_link(a...)) {};
    static_assert(std::is_invocable_v<decltype(both), upath, upath>);
    static_assert(!std::is_invocable_v<decltype(both), upath, char16_t const*>);
    static_assert(!std::is_convertible_v<upath, std::string> && !std::is_convertible_v<int, upath>);
}

TEST_F(Path, ComparesHashesAndPrintsItsText) {
    upath const expanding(u"/\u00E9"), literal(u"/\u00E9", false), other(u"/\u6F22");
    EXPECT_TRUE(expanding == literal && !(expanding != literal) && !(expanding < literal));
    EXPECT_TRUE(expanding != other && expanding < other && !(other < expanding));
    EXPECT_TRUE(other > expanding && other >= expanding && literal <= expanding);
    EXPECT_TRUE(other == u"/\u6F22" && u"/" != other && other != std::u16string_view(u"/\u6F22/"));
    EXPECT_EQ(std::hash<upath>()(expanding), std::hash<upath>()(literal));
    EXPECT_EQ(std::hash<upath>()(other), std::hash<std::u16string>()(u"/\u6F22"));
    std::ostringstream out;
    out << other;
    EXPECT_EQ(out.str(), "/\u6F22");
}

}  // namespace
}  // namespace ko::filesystem
