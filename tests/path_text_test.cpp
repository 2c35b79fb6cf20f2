#include <pwd.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <ko/filesystem.hpp>

#include "support/caught.hpp"
#include "support/files.hpp"
#include "support/short_texts.hpp"

namespace ko::filesystem::detail {
namespace {

using ko::filesystem::testing::caught;
using ko::filesystem::testing::environment_guard;
using ko::filesystem::testing::for_each_text;
using ko::filesystem::testing::utf8;

using text = std::u16string;
using byte_traits = path_traits<char, char>;

std::u16string const alphabet = u"/.a~";

/// What stands before and behind the last `c`; `head` is all, and `found` false, without one.
struct cut {
    text head, tail;
    bool found = false;
};
cut cut_at_last(char16_t c, text const& p) {
    for (std::size_t i = p.size(); i-- > 0;)
        if (p[i] == c) return {p.substr(0, i), p.substr(i + 1), true};
    return {p, {}, false};
}

pathname_elements expected_elements(text const& p) {
    if (p == u"/") return {u"", u"/", u"/", u""};
    cut const at_slash = cut_at_last(u'/', p);
    pathname_elements e;
    e.filename = at_slash.found ? at_slash.tail : p;
    if (at_slash.found) e.parent_path = at_slash.head.empty() ? u"/" : at_slash.head;
    cut const at_dot = cut_at_last(u'.', e.filename);
    bool const only_dots = e.filename == u"." || e.filename == u"..";
    e.stem = only_dots ? e.filename : at_dot.head;
    if (!only_dots) e.extension = at_dot.tail;
    return e;
}

text expected_native_form(text const& p) {
    text native;
    for (char16_t const c : p)
        if (c != u'/' || native.empty() || native.back() != u'/') native += c;
    if (native.size() > 1 && native.back() == u'/') native.pop_back();
    return native;
}

TEST(PathText, IsTakenApartByTheRule) {
    for_each_text(alphabet, 6, [](text const& p) {
        SCOPED_TRACE(utf8(p));
        pathname_elements const expected = expected_elements(p);
        bool const rooted = !p.empty() && p[0] == u'/';
        ASSERT_EQ(is_absolute(p), rooted);
        ASSERT_EQ(get_root_path_length(p), rooted ? 1u : 0u);
        ASSERT_EQ(extract_root_path(p), rooted ? u"/" : u"");
        ASSERT_EQ(extract_root_directory(p), extract_root_path(p));
        ASSERT_EQ(extract_root_name(p), u"");
        ASSERT_EQ(extract_root_path(p) + extract_relative_path(p), p);
        ASSERT_EQ(extract_parent_path(p), expected.parent_path);
        ASSERT_EQ(extract_filename(p), expected.filename);
        ASSERT_EQ(extract_stem(p), expected.stem);
        ASSERT_EQ(extract_extension(p), expected.extension);
        ASSERT_EQ(extract_first_element(p, 0), p.substr(0, std::min(p.find(u'/'), p.size())));

        pathname_elements const all = extract_pathname_elements(p);
        bool const trailing_dot = !all.filename.empty() && all.filename.back() == u'.';
        ASSERT_EQ(all.parent_path, expected.parent_path);
        ASSERT_EQ(all.filename, expected.filename);
        ASSERT_EQ(all.stem, trailing_dot ? expected.filename : expected.stem);
        ASSERT_EQ(all.extension, trailing_dot ? u"" : expected.extension);

        text removed = p;
        ASSERT_EQ(&remove_filename(removed), &removed);
        ASSERT_EQ(removed, expected.parent_path);

        std::string bytes = utf8(p);
        ASSERT_EQ(byte_traits::is_absolute(bytes), rooted);
        ASSERT_EQ(byte_traits::extract_filename(bytes), utf8(expected.filename));
        ASSERT_EQ(byte_traits::make_native_form(bytes, false), utf8(expected_native_form(p)));
        ASSERT_EQ(byte_traits::remove_filename(bytes), utf8(expected.parent_path));
    });
}

// The table again in words, so that the rule above is itself checked.
TEST(PathText, HasThePartsOfTheTable) {
    struct {
        text p, root, relative, parent, filename, stem, extension;
    } const rows[] = {
        {u"", u"", u"", u"", u"", u"", u""},
        {u"/", u"/", u"", u"", u"/", u"/", u""},
        {u"/a", u"/", u"a", u"/", u"a", u"a", u""},
        {u"/a/b.txt", u"/", u"a/b.txt", u"/a", u"b.txt", u"b", u"txt"},
        {u"a/", u"", u"a/", u"a", u"", u"", u""},
        {u"//a", u"/", u"/a", u"/", u"a", u"a", u""},
        {u"a.b.c", u"", u"a.b.c", u"", u"a.b.c", u"a.b", u"c"},
        {u".bashrc", u"", u".bashrc", u"", u".bashrc", u"", u"bashrc"},
        {u"a.", u"", u"a.", u"", u"a.", u"a", u""},
        {u"x/..", u"", u"x/..", u"x", u"..", u"..", u""},
        {u"x/.", u"", u"x/.", u"x", u".", u".", u""},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(utf8(row.p));
        EXPECT_EQ(extract_root_path(row.p), row.root);
        EXPECT_EQ(extract_relative_path(row.p), row.relative);
        EXPECT_EQ(extract_parent_path(row.p), row.parent);
        EXPECT_EQ(extract_filename(row.p), row.filename);
        EXPECT_EQ(extract_stem(row.p), row.stem);
        EXPECT_EQ(extract_extension(row.p), row.extension);
    }
    EXPECT_EQ(extract_pathname_elements(u"a.").stem, u"a.");
    EXPECT_EQ(extract_first_element(u"/a/b", 1), u"/");
    EXPECT_EQ(extract_first_element(u"ab", 9), u"ab");
    EXPECT_EQ(extract_first_element(u"", 9), u"");
}

TEST(PathText, HasANativeForm) {
    environment_guard const home("HOME", "//home//u/");
    for_each_text(alphabet, 6, [](text const& p) {
        ASSERT_EQ(make_native_form(p, false), expected_native_form(p)) << utf8(p);
        text const expanded = make_native_form(p, true);
        ASSERT_TRUE((!p.empty() && p[0] == u'~') || expanded == expected_native_form(p)) << utf8(p);
        ASSERT_EQ(make_native_form(expanded, false), expanded) << utf8(p);
        ASSERT_EQ(make_generic_form(p), p);
    });
    EXPECT_EQ(make_native_form(u"~//a/./b//", true), u"/home/u/a/./b");
    EXPECT_EQ(make_native_access_form_with_cleanup(u"~//\u00E9/"), "/home/u/\xC3\xA9");
    EXPECT_EQ(byte_traits::make_native_form("~//a/", true), "/home/u/a");
}

TEST(PathText, IsJoined) {
    struct {
        text base, addition, joined;
    } const rows[] = {
        {u"a", u"b", u"a/b"}, {u"a/", u"b", u"a/b"},      {u"/", u"b", u"/b"},
        {u"", u"/b", u"/b"},  {u"", u"b//c/", u"b/c"},    {u"a", u"", u"a/"},
        {u"a/", u"", u"a/"},  {u"a", u"b//c/", u"a/b/c"}, {u"a//", u"b", u"a//b"},
        {u"", u"", u""},      {u"a", u"~", u"a/~"},
    };
    for (auto const& row : rows) {
        text base = row.base;
        EXPECT_EQ(&concatenate_pathname(base, row.addition, false), &base);
        EXPECT_EQ(base, row.joined) << utf8(row.base) << " + " << utf8(row.addition);
        std::string base8 = utf8(row.base);
        EXPECT_EQ(byte_traits::concatenate_pathname(base8, utf8(row.addition), false),
                  utf8(row.joined));
    }
    for (text const& addition : {text(u"/b"), text(u"~")}) {
        text base = u"a";
        auto const error =
            caught<InvalidArgument>([&] { concatenate_pathname(base, addition, true); });
        ASSERT_TRUE(error);
        EXPECT_EQ(error->message(), "Absolute path not permitted");
        EXPECT_TRUE(error->path().empty() && error->arguments().empty());
        EXPECT_EQ(base, u"a");
    }
    for (text self : {u"a//b", u"a/b", u"a/relative/path/that/is/longer/than/the/buffer"}) {
        text const joined = self + u"/" + make_native_form(self, false);
        EXPECT_EQ(concatenate_pathname(self, self, false), joined);
    }
}

TEST(PathText, GetsAnotherExtension) {
    struct {
        text p, ext, replaced;  // an empty result stands for "Invalid extension"
    } const rows[] = {
        {u"a.txt", u"md", u"a.md"},
        {u"a.txt", u".md", u"a.md"},
        {u"a", u"md", u"a.md"},
        {u"a", u".md", u"a.md"},
        {u".bashrc", u"txt", u".txt"},
        {u"a.", u"md", u"a..md"},
        {u"a.", u".md", u"a..md"},
        {u"a.b", u"c.d", u"a.c.d"},
        {u"a.txt", u"", u"a.txt"},
        {u"d.x/a", u"md", u"d.x/a.md"},
        {u"/a", u"b.", u"/a.b."},
        {u"", u"md", u""},
        {u"a/", u"..", u"a/"},
        {u"x/..", u"/", u"x/.."},
        {u".", u".", u"."},
        {u"/", u"md", u"/"},
        {u"d./.x", u"y", u"d./.y"},
    };
    for (auto const& row : rows) {
        text p = row.p;
        EXPECT_EQ(&replace_extension(p, row.ext), &p);
        EXPECT_EQ(p, row.replaced) << utf8(row.p) << " + " << utf8(row.ext);
    }
    for (text const ext : {u"..x", u".", u"..", u"x/y", u"/", u"./"}) {
        text p = u"a.txt";
        auto const error = caught<InvalidArgument>([&] { replace_extension(p, ext); });
        ASSERT_TRUE(error);
        EXPECT_EQ(error->message(), "Invalid extension");
        EXPECT_TRUE(error->path().empty() && error->arguments().empty());
        EXPECT_EQ(p, u"a.txt");
    }
    text self = u"a.b";
    EXPECT_EQ(replace_extension(self, self), u"a.a.b");
}

TEST(PathText, ExpandsTheOwnHome) {
    ::passwd const* const user = ::getpwuid(::getuid());
    std::string const database = user == nullptr ? "" : user->pw_dir;
    struct {
        char const* home;
        std::string p, expanded;
    } const rows[] = {
        {"/h/u", "~", "/h/u"},
        {"/h/u", "~/", "/h/u"},
        {"/h/u", "~/a/b", "/h/u/a/b"},
        {"/h/u/", "~/a", "/h/u//a"},
        {"/h/u", "a/~", "a/~"},
        {"/h/u", "", ""},
        {"rel", "~//", "rel//"},
        {"/h/\xC3\xA9", "~", "/h/\xC3\xA9"},
        {nullptr, "~", database},
        {"", "~", database},
        {"", "~/x", database.empty() ? "" : database + "/x"},
    };
    for (auto const& row : rows) {
        environment_guard const home("HOME", row.home);
        EXPECT_EQ(pathname_traits<char>::replace_tilde_with_home_dir(row.p), row.expanded);
        text const p = from_filesystem(row.p), expanded = from_filesystem(row.expanded);
        EXPECT_EQ(pathname_traits<char16_t>::replace_tilde_with_home_dir(p), expanded);
        EXPECT_EQ(make_expanded_path(p, false), expanded);
        EXPECT_EQ(make_expanded_path(p, true), p);
        EXPECT_EQ(is_absolute_path_when_expanded(p, false),
                  !expanded.empty() && expanded[0] == u'/');
        EXPECT_EQ(is_absolute_path_when_expanded(p, true), is_absolute(p));
    }
    environment_guard const home("HOME", "/h/\xFF");  // can't be told in UTF-16
    EXPECT_EQ(pathname_traits<char>::replace_tilde_with_home_dir("~/x"), "/h/\xFF/x");
    EXPECT_EQ(make_native_form(u"~/x", true), u"");
    EXPECT_EQ(make_expanded_path(u"x\xD800", false), u"");
}

TEST(PathText, ExpandsTheHomeOfAnotherUser) {
    ::passwd const* const root = ::getpwnam("root");
    ASSERT_NE(root, nullptr);
    std::string const home = root->pw_dir;
    EXPECT_EQ(pathname_traits<char>::replace_tilde_with_home_dir("~root"), home);
    EXPECT_EQ(pathname_traits<char>::replace_tilde_with_home_dir("~root//x"), home + "//x");
    for (text const& p : {text(u"~nosuchuser/x"), text(u"~root\0y/x", 9), text(u"~nosuchuser")})
        EXPECT_EQ(make_expanded_path(p, false), p);
}

TEST(PathText, IsWalkedByACursor) {
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
    EXPECT_EQ(walk(u"a/b", 0), (stops{{0, u"a"}, {2, u"b"}, {3, u""}}));
    EXPECT_EQ(walk(u"a//b", 0), (stops{{0, u"a"}, {2, u""}, {3, u"b"}, {4, u""}}));

    for_each_text(alphabet, 6, [&](text const& p) {
        text const native = make_native_form(p, false);
        std::size_t const root = get_root_path_length(native);
        stops const down = walk(native, root);
        text joined;
        for (auto const& [at, element] : down)
            if (!element.empty()) concatenate_pathname(joined, element, false);
        ASSERT_EQ(joined, native);

        auto [position, element] = down.back();
        move_down(native, root, position, element);
        ASSERT_EQ(std::pair(position, element), down.back()) << "left the end of " << utf8(native);
        for (std::size_t i = down.size(); i-- > 0;) {
            move_up(native, root, position, element);
            ASSERT_EQ(std::pair(position, element), down[i == 0 ? 0 : i - 1]) << utf8(native);
        }
    });
}

}  // namespace
}  // namespace ko::filesystem::detail
