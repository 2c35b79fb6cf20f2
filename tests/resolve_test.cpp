#include <unistd.h>

#include <string>

#include <gtest/gtest.h>

#include <ko/filesystem.hpp>

#include "support/files.hpp"
#include "support/outcome.hpp"

namespace ko::filesystem {
namespace {

using testing::outcome;
using testing::scratch_dir;
using testing::utf8;

class Resolve : public ::testing::Test {
protected:
    Resolve() {
        scratch_dir::must(::chdir(utf8(scratch / u"").c_str()) == 0);
        root = get_current_path();
        scratch.directory(u"d");
        scratch.directory(u"d/\u00E9");
        scratch.file(u"d/f");
        scratch.link(u"l", "d");
        scratch.link(u"dangling", "x");
        scratch.link(u"loop", "loop");
    }
    ~Resolve() override { static_cast<void>(::chdir(before_.c_str())); }

    scratch_dir scratch;
    std::u16string root;

private:
    std::string before_ = std::filesystem::current_path();
};

TEST_F(Resolve, MakesPathsAbsolute) {
    testing::environment_guard const home("HOME", "/h");
    struct {
        std::u16string p, base, absolute;
    } const rows[] = {
        {u"b", u"/a", u"/a/b"},    {u"b", u"/a//", u"/a/b"}, {u"/x", u"rel", u"/x"},
        {u"b", u"", root + u"/b"}, {u"", u"/a", u""},        {u"a/../b", u"/x", u"/x/a/../b"},
        {u"~/b", u"/a", u"/h/b"},  {u"b", u"/", u"/b"},      {u"b", u"~", u"/h/b"},
        {u"", u"rel", u""},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(absolute(row.p, row.base), row.absolute) << utf8(row.p);
        upath const result = absolute(upath(row.p, false), upath(row.base));
        EXPECT_TRUE(row.p == u"~/b" || result.native() == row.absolute) << utf8(row.p);
        EXPECT_TRUE(result.expand_tilde());
    }
    EXPECT_EQ(absolute(upath(u"~/b", false), upath(u"/a")).native(), u"/a/~/b");
    std::string const refused = "InvalidArgument \"Invalid Base Path\"";
    EXPECT_EQ(outcome(scratch, [] { absolute(upath(u"b"), upath(u"rel")); }), refused);
    EXPECT_EQ(outcome(scratch, [] { absolute(u"b", u"rel"); }), refused);
    EXPECT_EQ(outcome(scratch, [] { canonical(u"b", u"rel"); }), refused);
}

TEST_F(Resolve, FindsCanonicalPaths) {
    testing::environment_guard const home("HOME", utf8(root).c_str());
    struct {
        std::u16string p, base, canonical;
    } const rows[] = {
        {u"l/f", u"", u"/d/f"}, {root + u"//l/../d/.", u"", u"/d"}, {u"f", root + u"/l", u"/d/f"},
        {u"~/l", u"/", u"/d"},  {u"\u00E9", u"~/l/", u"/d/\u00E9"}, {u".", u"", u""},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(canonical(row.p, row.base), root + row.canonical) << utf8(row.p);
        upath const p(row.p, /*expand_tilde=*/false);  // a tilde is expanded all the same
        EXPECT_EQ(canonical(p, upath(row.base)).native(), root + row.canonical) << utf8(row.p);
    }
    EXPECT_EQ(canonical(u"", u"rel"), u"");
    EXPECT_EQ(canonical(u"/"), u"/");
    std::u16string const lone(1, char16_t{0xD800});
    struct {
        std::u16string p, base;
        std::string outcome;
    } const failures[] = {
        {u"missing", u"", "PathNotFound"},
        {u"dangling", u"", "PathNotFound"},
        {u"d/f/x", u"", "PathNotFound"},
        {u"loop", u"", "SystemError [@/loop] ELOOP"},
        {u"x" + lone, u"", "PathNotFound"},
        {u"d", u"/" + lone, "PathNotFound"},
        {std::u16string(u"d\0x", 3), u"", "InvalidArgument \"\" [d\\0x]"},
    };
    for (auto const& row : failures)
        EXPECT_EQ(outcome(scratch, [&] { canonical(row.p, row.base); }), row.outcome);
}

TEST_F(Resolve, FindsWeaklyCanonicalPaths) {
    struct {
        std::u16string p, canonical;
    } const rows[] = {
        {u"l/f", root + u"/d/f"},
        {u"l/missing/x", root + u"/d/missing/x"},
        {root + u"/l/missing/../x", root + u"/d/x"},
        {u"l/missing/./y", root + u"/d/missing/y"},
        {u"l/missing/.", root + u"/d/missing/."},
        {u"l/missing/..", root + u"/d"},
        {u"l/missing/../../../d", root.substr(0, root.rfind(u'/')) + u"/d"},
        {u"missing/a", u"missing/a"},
        {u"missing/../a", u"a"},
        {u"dangling/a", u"dangling/a"},
        {u"d/f/below", root + u"/d/f/below"},
        {u"/no/such", u"/no/such"},
        {u"", u""},
        {u"l/\u00E9/\u6F22", root + u"/d/\u00E9/\u6F22"},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(weakly_canonical(row.p), row.canonical) << utf8(row.p);
        upath const result = weakly_canonical(upath(row.p, false));
        EXPECT_EQ(result.native(), row.canonical) << utf8(row.p);
        EXPECT_TRUE(result.expand_tilde());
    }
    testing::environment_guard const home("HOME", "/no/such/home");
    EXPECT_EQ(weakly_canonical(upath(u"~/x", false)).native(), u"/no/such/home/x");
    EXPECT_EQ(outcome(scratch, [&] { weakly_canonical(u"d/~/x"); }),
              "InvalidArgument \"Absolute path not permitted\"");
    EXPECT_EQ(outcome(scratch, [&] { weakly_canonical(u"loop/x"); }), "SystemError [loop/x] ELOOP");
    EXPECT_EQ(outcome(scratch, [&] { weakly_canonical(std::u16string(u"d\0x", 3)); }),
              "InvalidArgument \"\" [d\\0x]");
}

TEST_F(Resolve, FindsRelativePaths) {
    struct {
        std::u16string p, base, relative;
    } const rows[] = {
        {u"/a/b/c", u"/a", u"b/c"}, {u"/a", u"/a/b", u".."},          {u"/a", u"/a", u"."},
        {u"l/f", u"d", u"f"},       {u"d", u"l/\u00E9", u".."},       {u"d/\u00E9", u"", u""},
        {u"missing", u"d", u""},    {u"missing/a", u"missing", u"a"},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(relative(row.p, row.base), row.relative) << utf8(row.p);
        EXPECT_EQ(relative(upath(row.p), upath(row.base)).native(), row.relative) << utf8(row.p);
    }
    EXPECT_EQ(relative(u"l/f"), u"d/f");
    EXPECT_EQ(relative(upath(u"l")).native(), u"d");
}

TEST_F(Resolve, TellsWhetherPathsAreEquivalent) {
    scratch_dir::must(::link(utf8(scratch / u"d/f").c_str(), utf8(scratch / u"hard").c_str()) == 0);
    testing::environment_guard const home("HOME", utf8(root).c_str());
    std::u16string const lone(1, char16_t{0xD800});
    struct {
        std::u16string a, b;
        std::string outcome;
    } const rows[] = {
        {u"d/f", u"d/f", "yes"},
        {u"d/f", u"hard", "yes"},
        {u"l", u"d/", "yes"},
        {u"d", u"d/f", "no"},
        {u"d", u"missing", "no"},
        {u"missing", u"d", "no"},
        {u"", u"d", "no"},
        {u"d", u"", "no"},
        {u"d", u"x" + lone, "no"},
        {u"x" + lone, u"d", "no"},
        {u"", u"", "InvalidArgument \"Empty Path not permitted\""},
        {lone, lone, "PathNotFound"},
        {u"missing", u"missing too", "PathNotFound [missing]"},
        {u"m\u6F22", u"missing", "PathNotFound [m\"]"},  // U+6F22 leaves its low byte
        {u"~/d", u"d", "no"},
        {std::u16string(u"d\0", 2), u"d", "InvalidArgument \"\" [d\\0]"},
    };
    for (auto const& row : rows) {
        bool same = false;
        std::string result = outcome(scratch, [&] { same = equivalent(row.a, row.b); });
        EXPECT_EQ(result == "ok" ? (same ? "yes" : "no") : result, row.outcome)
            << utf8(row.a) << ' ' << utf8(row.b);
    }
    EXPECT_TRUE(equivalent(upath(u"~/d"), upath(u"l//")));
}

TEST_F(Resolve, TellsTheSpaceOfAFileSystem) {
    for (upath const& p : {upath(root), upath(u"l/f")}) {
        space_info const info = space(p);
        EXPECT_TRUE(info.available <= info.free && info.free <= info.capacity);
        EXPECT_GT(info.capacity, 0u);
    }
    EXPECT_EQ(outcome(scratch, [] { space(upath()); }),
              "InvalidArgument \"Empty Path not permitted\"");
    EXPECT_EQ(outcome(scratch, [] { space(upath(u"m\u00E9\u6F22x")); }),
              "PathNotFound [m\uFFFD\"x]");
}

TEST_F(Resolve, LeavesWhatOtherPlatformsHave) {
    testing::environment_guard const home("HOME", "/h");
    std::u16string const lone(1, char16_t{0xD800});
    for (bool const flag : {false, true}) {
        EXPECT_EQ(get_unc_path(u"~//\u00E9\0/", flag), u"~//\u00E9");
        EXPECT_EQ(get_unc_path(lone + u"x", flag), u"\uFFFDx");
        EXPECT_EQ(get_unc_path(u"x" + lone, flag), u"");
        EXPECT_EQ(get_unc_path(upath(u"~/\u00E9", false), flag).native(), u"/h/\u00E9");
        EXPECT_EQ(get_unc_path(upath(), flag), upath());
    }
    EXPECT_EQ(outcome(scratch, [] { create_shortcut(u"d", u"s"); }), "InvalidOperation");
    EXPECT_EQ(outcome(scratch, [] { create_shortcut(upath(), upath()); }), "InvalidOperation");
    EXPECT_FALSE(exists(u"s"));
}

}  // namespace
}  // namespace ko::filesystem
