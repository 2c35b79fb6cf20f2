#include <ko/filesystem/std_path.hpp>

#include "support/outcome.hpp"

namespace ko::filesystem::test_support::path_test {

struct Path : scratch_test {
    environment_guard home{"HOME", "/h/u"};
};

TEST_F(Path, HoldsItsTextInNativeForm) {
    EXPECT_OUTCOME(upath(u"~//a/"), "/h/u/a");
    EXPECT_OUTCOME(upath(u"~//a/", false), "~/a");
    EXPECT_OUTCOME(upath::from_utf8("\u00E9//"), "\u00E9");
    EXPECT_OUTCOME(upath::from_utf8(std::string_view("~/x").substr(1)), "/x");
    EXPECT_OUTCOME(upath::from_utf8("a\xFF"), "InvalidArgument \"Invalid UTF-8\" [a\uFFFD]");
    EXPECT_EQ(joined(upath().empty(), upath().expand_tilde(), upath(u"x", false).expand_tilde()),
              "yes|yes|no|");
}

TEST_F(Path, AppendsTextsAndPaths) {
    upath const name(u"~", false);
    EXPECT_OUTCOME(upath(u"a") / u"" / upath() / u"b//c/", "a/b/c");
    EXPECT_OUTCOME(upath() / u"~/x", "/h/u/x");
    EXPECT_OUTCOME(upath(u"a", false) / u"~/x", "a/~/x");
    EXPECT_OUTCOME(upath(u"a") / u"~/x", no_absolute_path);
    EXPECT_OUTCOME(upath(u"a") / name, "a/~");
    EXPECT_OUTCOME(name.with_expand_tilde(true) / u"x", "~/x");
    EXPECT_OUTCOME(upath(u"a") / upath(u"/b"), no_absolute_path);
    EXPECT_OUTCOME(upath(u"/").replace_filename(u"x"), "/x");
    EXPECT_OUTCOME(upath(u"a/b").replace_filename(name), "a/~");
    upath kept(u"a/b");
    EXPECT_OUTCOME(kept.replace_filename(u"~/x"), no_absolute_path);
    EXPECT_EQ(joined(kept, (upath(u"a", false) / u"x").expand_tilde()), "a/b|no|");
}

TEST_F(Path, HasPartsInWhichATildeIsAName) {
    auto const parts = [](upath const& p) {
        return joined(p.root_path(), p.relative_path(), p.parent_path(), p.filename(), p.stem(),
                      p.extension(), p.is_absolute(), p.is_relative()) +
               joined(p.has_root_path(), p.has_relative_path(), p.has_parent_path(),
                      p.has_filename(), p.has_stem(), p.has_extension());
    };
    EXPECT_EQ(parts(upath(u"/d/~root/a.txt")),
              "/|d/~root/a.txt|/d/~root|a.txt|a|txt|yes|no|yes|yes|yes|yes|yes|yes|");
    EXPECT_EQ(parts(upath(u"/~root/.x").relative_path()),
              "|~root/.x|~root|.x||x|no|yes|no|yes|yes|yes|no|yes|");
    EXPECT_EQ(parts(upath(u"/")), "/|||/|/||yes|no|yes|no|no|yes|yes|no|");
    EXPECT_EQ(parts(upath()), "||||||no|yes|no|no|no|no|no|no|");
    EXPECT_OUTCOME(upath(u"/d/~root/a").remove_filename(), "/d/~root");
    EXPECT_OUTCOME(upath(u"~root/a.txt", false).replace_extension(u"md"), "~root/a.md");
    EXPECT_OUTCOME(upath(u"x/../~/./\u6F22").lexically_normal(), "~/\u6F22");
    EXPECT_OUTCOME(upath(u"/../a/.").lexically_normal(), "/../a/.");
    EXPECT_OUTCOME(upath(u"/a/b/c").lexically_relative(upath(u"/a/d")), "../b/c");
    EXPECT_OUTCOME(upath(u"/a").lexically_proximate(upath(u"/a")), ".");
    EXPECT_OUTCOME(upath(u"a").lexically_proximate(upath(u"..")), "a");
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
    EXPECT_EQ(joined(p, p.to_std(), p.expand_tilde()), "~/\u6F22/x|~/\u6F22/x|no|");
}

/// Converts to both; has always counted as a path in comparisons and as a text in joins.
struct path_and_text {
    operator upath() const { return upath(u"path"); }
    operator std::u16string() const { return u"text"; }
};

TEST_F(Path, IsNotConfusedWithText) {
    upath p(u"a");
    EXPECT_OUTCOME(p / path_and_text(), "a/text");
    EXPECT_TRUE(upath(u"path") == path_and_text());
    EXPECT_OUTCOME((p /= {u'b', u'c'}), "a/bc");
    EXPECT_OUTCOME(upath::from_utf8({"abc", 1}), "a");
    auto const both = [](auto... a) -> decltype(rename(a...), create_hard_link(a...)) {};
    static_assert(std::is_invocable_v<decltype(both), upath, upath>);
    static_assert(!std::is_invocable_v<decltype(both), upath, char16_t const*>);
    static_assert(!std::is_convertible_v<upath, std::string> && !std::is_convertible_v<int, upath>);
}

TEST_F(Path, ComparesHashesAndPrintsItsText) {
    upath const expanding(u"/\u00E9"), literal(u"/\u00E9", false), other(u"/\u6F22");
    auto const compared = [](auto const& a, auto const& b) {
        return joined(a == b, a != b, a<b, a <= b, a> b, a >= b);
    };
    EXPECT_EQ(compared(expanding, literal), "yes|no|no|yes|no|yes|");
    EXPECT_EQ(compared(expanding, other), "no|yes|yes|yes|no|no|");
    EXPECT_EQ(compared(other, expanding), "no|yes|no|no|yes|yes|");
    EXPECT_EQ(joined(other == u"/\u6F22", u"/" != other, other != std::u16string_view(u"/\u6F22/")),
              "yes|yes|yes|");
    EXPECT_EQ(std::hash<upath>()(expanding), std::hash<upath>()(literal));
    EXPECT_EQ(std::hash<upath>()(other), std::hash<std::u16string>()(u"/\u6F22"));
    std::ostringstream out;
    out << other;
    EXPECT_EQ(out.str(), "/\u6F22");
}

}  // namespace ko::filesystem::test_support::path_test
