#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include <ko/filesystem.hpp>

#include "support/files.hpp"
#include "support/outcome.hpp"

namespace ko::filesystem {
namespace {

struct Path : testing::scratch_test {
    testing::environment_guard home{"HOME", "/h/u"};
};

TEST_F(Path, KeepsItsTextInNativeForm) {
    TELLS(upath(u"~//a/"), "/h/u/a");
    TELLS(upath(u"~//a/", false), "~/a");
    TELLS(upath::from_utf8("\u00E9//"), "\u00E9");
    TELLS(upath::from_utf8("a\xFF"), "InvalidArgument \"Invalid UTF-8\" [a\uFFFD]");
    TELLS(upath(u"\u00E9").string(), "\u00E9");
    EXPECT_TRUE(upath().empty() && upath().expand_tilde() && !upath(u"x", false).expand_tilde());
}

TEST_F(Path, IsJoinedWithText) {
    std::string const refused = "InvalidArgument \"Absolute path not permitted\"";
    TELLS(upath(u"a") / u"", "a");
    TELLS(upath(u"a") / u"b//c/", "a/b/c");
    TELLS(upath(u"/") / u"b", "/b");
    TELLS(upath() / u"~/x", "/h/u/x");
    TELLS(upath(u"a", false) / u"~/x", "a/~/x");
    TELLS(upath(u"a") / u"/b", refused);
    TELLS(upath(u"a") / u"~/x", refused);
    EXPECT_FALSE((upath(u"a", false) / u"x").expand_tilde());
}

TEST_F(Path, HasPartsThatStayAsTheyAre) {
    upath const p(u"/d/~root/a.txt");
    TELLS(p.root_path(), "/");
    TELLS(p.relative_path(), "d/~root/a.txt");
    TELLS(p.parent_path().filename(), "~root");
    TELLS(p.stem(), "a");
    TELLS(p.extension(), "txt");
    TELLS(upath(p).remove_filename(), "/d/~root");
    TELLS(upath(p).replace_extension(u"md").filename(), "a.md");
    EXPECT_TRUE(p.is_absolute() && !p.relative_path().is_absolute());
}

TEST_F(Path, IsComparedHashedAndPrintedByItsText) {
    upath const expanding(u"/\u00E9"), literal(u"/\u00E9", false), other(u"/\u6F22");
    EXPECT_TRUE(expanding == literal && !(expanding != literal) && !(expanding < literal));
    EXPECT_TRUE(expanding != other && expanding < other && !(other < expanding));
    EXPECT_EQ(std::hash<upath>()(expanding), std::hash<upath>()(literal));
    EXPECT_EQ(std::hash<upath>()(other), std::hash<std::u16string>()(u"/\u6F22"));
    std::ostringstream out;
    out << other;
    EXPECT_EQ(out.str(), "/\u6F22");
}

}  // namespace
}  // namespace ko::filesystem
