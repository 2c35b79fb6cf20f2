#include <pwd.h>

#include "support/outcome.hpp"
#include "support/short_texts.hpp"

namespace ko::filesystem::test_support::path_text_test {

using namespace detail;

using text = std::u16string;
using byte_traits = path_traits<char, char>;

struct PathText : scratch_test {
    environment_guard home{"HOME", "//home//u/"};
};

std::string parts(text const& p) {
    return joined(extract_root_path(p), extract_relative_path(p), extract_parent_path(p),
                  extract_filename(p), extract_stem(p), extract_extension(p));
}

TEST_F(PathText, HasTheseParts) {
    EXPECT_OUTCOME(parts(u"/a/b.c.txt"), "/|a/b.c.txt|/a|b.c.txt|b.c|txt|");
    EXPECT_OUTCOME(extract_first_element(u"/a/b", 1), "/");
    EXPECT_OUTCOME(extract_first_element(u"ab", 9), "ab");
    EXPECT_OUTCOME(extract_root_name(u"//x"), "");
}

/// The parts before and after the last `c`; without one, `p` and nothing.
std::pair<text, text> cut_at_last(char16_t c, text const& p) {
    for (std::size_t i = p.size(); i-- > 0;)
        if (p[i] == c) return {p.substr(0, i), p.substr(i + 1)};
    return {p, {}};
}

text expected_native_form(text const& p) {
    text native;
    for (char16_t const c : p)
        if (c != u'/' || native.empty() || native.back() != u'/') native += c;
    if (native.size() > 1 && native.back() == u'/') native.pop_back();
    return native;
}

// Every short text against a plain implementation of the rules.
TEST_F(PathText, FollowsTheRulesForEveryShortText) {
    for_each_text(text(u"/.a~"), 6, [](text const& p) {
        SCOPED_TRACE(utf8(p));
        bool const rooted = p.substr(0, 1) == u"/", has_slash = p.find(u'/') != p.npos;
        auto const [head, tail] = cut_at_last(u'/', p);
        text const parent = p == u"/" || !has_slash ? u"" : head.empty() ? u"/" : head;
        text const name = p == u"/" || !has_slash ? p : tail;
        bool const dots = name == u"." || name == u"..";
        auto const [stem, extension] = dots ? std::pair(name, text()) : cut_at_last(u'.', name);
        bool const trailing_dot = !name.empty() && name.back() == u'.';
        text removed = p;
        pathname_elements const all = extract_pathname_elements(p);
        ASSERT_EQ(parts(p),
                  joined(p.substr(0, rooted), p.substr(rooted), parent, name, stem, extension));
        ASSERT_EQ(joined(all.parent_path, all.filename, all.stem, all.extension),
                  joined(parent, name, trailing_dot ? name : stem, extension));
        ASSERT_EQ(joined(is_absolute(p), get_root_path_length(p)), joined(rooted, int{rooted}));
        ASSERT_EQ(extract_root_directory(p), extract_root_path(p));
        ASSERT_EQ(remove_filename(removed), parent);
        ASSERT_EQ(extract_first_element(p, 0), p.substr(0, std::min(p.find(u'/'), p.size())));
        ASSERT_EQ(make_generic_form(p), p);

        text const native = make_native_form(p, false), expanded = make_native_form(p, true);
        ASSERT_EQ(native, expected_native_form(p));
        text const padded = u"a whole vector of " + p + u" and another one";
        ASSERT_EQ(make_native_form(padded, true), expected_native_form(padded));
        ASSERT_TRUE(p.substr(0, 1) == u"~" || expanded == native);
        ASSERT_EQ(make_native_form(expanded, false), expanded);

        std::string bytes = utf8(p);
        ASSERT_EQ(byte_traits::make_native_form(bytes, true), utf8(expanded));
        ASSERT_EQ(byte_traits::is_absolute(bytes), rooted);
        ASSERT_EQ(byte_traits::extract_filename(bytes), utf8(name));
        ASSERT_EQ(byte_traits::remove_filename(bytes), utf8(parent));
    });
}

TEST_F(PathText, IsJoined) {
    auto const join = [](text base, text const& addition, bool expand = false) {
        return concatenate_pathname(base, addition, expand);
    };
    EXPECT_OUTCOME(join(u"a/", u"b"), "a/b");
    EXPECT_OUTCOME(join(u"/", u"b"), "/b");
    EXPECT_OUTCOME(join(u"", u"/b//c/"), "/b/c");
    EXPECT_OUTCOME(join(u"a", u""), "a/");
    EXPECT_OUTCOME(join(u"a//", u"b//c/"), "a//b/c");
    EXPECT_OUTCOME(join(u"a", u"~"), "a/~");
    EXPECT_OUTCOME(join(u"", u"~/x", true), "/home/u/x");
    EXPECT_OUTCOME(join(u"a", u"/b"), no_absolute_path);
    EXPECT_OUTCOME(join(u"a", u"~", true), no_absolute_path);
    std::string bytes = "a";
    EXPECT_OUTCOME(byte_traits::concatenate_pathname(bytes, "b//", false), "a/b");
    for (text self : {u"a//b", u"a/b", u"a/relative/path/that/is/longer/than/the/buffer"}) {
        text const expected = self + u"/" + make_native_form(self, false);
        EXPECT_EQ(concatenate_pathname(self, self, false), expected);
    }
}

TEST_F(PathText, GetsAnotherExtension) {
    auto const replaced = [](text p, text const& ext) { return replace_extension(p, ext); };
    EXPECT_OUTCOME(replaced(u"d.x/a", u"md"), "d.x/a.md");
    EXPECT_OUTCOME(replaced(u"a.txt", u".md"), "a.md");
    EXPECT_OUTCOME(replaced(u".bashrc", u"txt"), ".txt");
    EXPECT_OUTCOME(replaced(u"a.", u"md"), "a..md");
    EXPECT_OUTCOME(replaced(u"a.b", u"c.d"), "a.c.d");
    EXPECT_OUTCOME(replaced(u"a.txt", u""), "a.txt");
    EXPECT_OUTCOME(replaced(u"", u"md"), "");
    EXPECT_OUTCOME(replaced(u"x/..", u"/"), "x/..");
    EXPECT_OUTCOME(replaced(u".", u"."), ".");
    for (text const ext : {u"..x", u".", u"..", u"x/y", u"/", u"./"})
        EXPECT_OUTCOME(replaced(u"a.txt", ext), "InvalidArgument \"Invalid extension\"");
    text self = u"a.b";
    EXPECT_EQ(replace_extension(self, self), u"a.a.b");
}

TEST_F(PathText, HasItsTildeExpanded) {
    ::passwd const* const user = ::getpwuid(::getuid());
    std::string const database = user == nullptr ? "" : user->pw_dir;
    ::passwd const* const admin = ::getpwnam("root");
    std::string const root = admin == nullptr ? "" : admin->pw_dir;
    auto const check = [](char const* home_now, std::string const& p8,
                          std::string const& expanded8) {
        environment_guard const guard("HOME", home_now);
        text const p = from_filesystem(p8), expanded = from_filesystem(expanded8);
        EXPECT_EQ(pathname_traits<char>::replace_tilde_with_home_dir(p8), expanded8);
        EXPECT_EQ(joined(make_expanded_path(p, false), make_expanded_path(p, true),
                         is_absolute_path_when_expanded(p, false),
                         is_absolute_path_when_expanded(p, true)),
                  joined(expanded, p, is_absolute(expanded), is_absolute(p)));
    };
    check("/h/u", "~/", "/h/u");
    check("/h/u", "~/a//b", "/h/u/a//b");
    check("/h/u/", "~/a", "/h/u//a");
    check("rel", "~//", "rel//");
    check("/h/\u00E9", "~", "/h/\u00E9");
    check(nullptr, "~", database);
    check("", "~/x", database.empty() ? "" : database + "/x");
    check("/h", "~root", root);
    for (std::string const& p : {std::string("~nosuchuser/x"), std::string("~root\0y/x", 9)})
        check("/h", p, p);
    EXPECT_OUTCOME(make_native_access_form_with_cleanup(u"~//\u00E9/"), "/home/u/\u00E9");
    environment_guard const guard("HOME", "/h/\xFF");  // not UTF-8
    EXPECT_OUTCOME(make_native_form(u"~/x", true), "");
    EXPECT_OUTCOME(make_expanded_path(text(u"x") + char16_t{0xD800}, false), "");
}

TEST_F(PathText, IsWalkedByACursor) {
    using stops = std::vector<std::pair<std::size_t, text>>;
    auto const walk = [](text const& p, std::size_t root) {
        stops down{{0, extract_first_element(p, root)}};
        std::size_t position = 0;
        for (text element = down[0].second; position < p.size() || !element.empty();) {
            move_down(p, root, position, element);
            down.emplace_back(position, element);
        }
        return down;
    };
    EXPECT_EQ(walk(u"/a/b", 1), (stops{{0, u"/"}, {1, u"a"}, {3, u"b"}, {4, u""}}));
    EXPECT_EQ(walk(u"a//b", 0), (stops{{0, u"a"}, {2, u""}, {3, u"b"}, {4, u""}}));
    for_each_text(text(u"/.a~"), 6, [&](text const& p) {
        text const native = make_native_form(p, false);
        std::size_t const root = get_root_path_length(native);
        stops const down = walk(native, root);
        auto [position, element] = down.back();
        move_down(native, root, position, element);
        ASSERT_EQ(std::pair(position, element), down.back()) << "left the end of " << utf8(native);
        for (std::size_t i = down.size(); i-- > 0;) {
            move_up(native, root, position, element);
            ASSERT_EQ(std::pair(position, element), down[i == 0 ? 0 : i - 1]) << utf8(native);
        }
    });
}

}  // namespace ko::filesystem::test_support::path_text_test
