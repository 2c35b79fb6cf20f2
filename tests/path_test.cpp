#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include <ko/filesystem.hpp>

#include "support/caught.hpp"
#include "support/files.hpp"

namespace ko::filesystem {
namespace {

using testing::caught;
using testing::environment_guard;

TEST(Path, KeepsItsTextInNativeForm) {
    environment_guard const home("HOME", "/h/u");
    EXPECT_EQ(upath(u"~//a/").native(), u"/h/u/a");
    EXPECT_EQ(upath(u"~//a/", false).native(), u"~/a");
    EXPECT_EQ(upath::from_utf8("\xC3\xA9//").native(), u"\u00E9");
    EXPECT_TRUE(upath().empty() && upath().expand_tilde() && upath(u"x").expand_tilde());
    EXPECT_FALSE(upath(u"x", false).expand_tilde());
    EXPECT_EQ(upath(u"\u00E9").string(), "\xC3\xA9");

    auto const error = caught<InvalidArgument>([] { upath::from_utf8("a\xFF"); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->message(), "Invalid UTF-8");
    EXPECT_EQ(error->path(), u"a\uFFFD");
}

TEST(Path, IsJoinedWithText) {
    environment_guard const home("HOME", "/h/u");
    EXPECT_EQ((upath(u"a") / u"").native(), u"a");
    EXPECT_EQ((upath(u"a") / u"b//c/").native(), u"a/b/c");
    EXPECT_EQ((upath(u"/") / u"b").native(), u"/b");
    EXPECT_EQ((upath() / u"~/x").native(), u"/h/u/x");
    EXPECT_EQ((upath(u"a", false) / u"~/x").native(), u"a/~/x");
    EXPECT_FALSE((upath(u"a", false) / u"x").expand_tilde());
    for (char16_t const* right : {u"/b", u"~/x"}) {
        upath left(u"a");
        auto const error = caught<InvalidArgument>([&] { left /= right; });
        ASSERT_TRUE(error);
        EXPECT_EQ(error->message(), "Absolute path not permitted");
        EXPECT_EQ(left, upath(u"a"));
    }
}

TEST(Path, HasPartsThatStayAsTheyAre) {
    upath const p(u"/d/~root/a.txt");
    EXPECT_EQ(p.root_path().native(), u"/");
    EXPECT_EQ(p.relative_path().native(), u"d/~root/a.txt");
    EXPECT_EQ(p.parent_path().filename().native(), u"~root");
    EXPECT_EQ(p.filename().native(), u"a.txt");
    EXPECT_EQ(p.stem().native(), u"a");
    EXPECT_EQ(p.extension().native(), u"txt");
    EXPECT_TRUE(p.is_absolute());
    EXPECT_FALSE(p.relative_path().is_absolute());
    EXPECT_EQ(upath(p).remove_filename(), upath(u"/d/~root"));
    EXPECT_EQ(upath(p).replace_extension(u"md").filename(), upath(u"a.md"));
}

TEST(Path, IsComparedHashedAndPrintedByItsText) {
    upath const expanding(u"/\u00E9"), literal(u"/\u00E9", false), other(u"/\u6F22");
    EXPECT_TRUE(expanding == literal && !(expanding != literal) && !(expanding < literal));
    EXPECT_TRUE(expanding != other && expanding < other && !(other < expanding));
    EXPECT_EQ(std::hash<upath>()(expanding), std::hash<upath>()(literal));
    EXPECT_EQ(std::hash<upath>()(other), std::hash<std::u16string>()(u"/\u6F22"));
    std::ostringstream out;
    out << other;
    EXPECT_EQ(out.str(), "/\xE6\xBC\xA2");
}

TEST(Path, ConstantsAreTheSameForBothCharacterTypes) {
    using narrow = pathname_traits<char>;
    using wide = pathname_traits<char16_t>;
    struct {
        char const* a;
        char16_t const* b;
        char const* value;
    } const rows[] = {
        {narrow::PATHNAME_SEPARATOR, wide::PATHNAME_SEPARATOR, "/"},
        {narrow::ROOT_PATHNAME, wide::ROOT_PATHNAME, "/"},
        {narrow::CURRENT_DIRECTORY, wide::CURRENT_DIRECTORY, "."},
        {narrow::PARENT_DIRECTORY, wide::PARENT_DIRECTORY, ".."},
        {narrow::PATH_SEPARATOR, wide::PATH_SEPARATOR, ":"},
        {"*", upath_constant::WILD_CARD, "*"},
        {".", upath_constant::FILE_EXTENSION_SEPARATOR, "."},
        {"/", upath_constant::GENERIC_PATHNAME_SEPARATOR, "/"},
        {"/", upath_constant::PATHNAME_SEPARATOR, "/"},
        {":", upath_constant::PATH_SEPARATOR, ":"},
        {".", upath_constant::CURRENT_DIRECTORY, "."},
        {"..", upath_constant::PARENT_DIRECTORY, ".."},
    };
    for (auto const& row : rows) {
        EXPECT_STREQ(row.a, row.value);
        EXPECT_EQ(testing::utf8(row.b), row.value);
    }
    static_assert(narrow::PATHNAME_SEPARATOR_CHARACTER == '/' &&
                  narrow::GENERIC_PATHNAME_SEPARATOR_CHARACTER == '/' &&
                  narrow::DOT_CHARACTER == '.' && narrow::TILDE_CHARACTER == '~' &&
                  narrow::PATH_SEPARATOR_CHAR == ':');
    static_assert(wide::PATHNAME_SEPARATOR_CHARACTER == u'/' &&
                  wide::GENERIC_PATHNAME_SEPARATOR_CHARACTER == u'/' &&
                  wide::DOT_CHARACTER == u'.' && wide::TILDE_CHARACTER == u'~' &&
                  wide::PATH_SEPARATOR_CHAR == u':');
}

}  // namespace
}  // namespace ko::filesystem
