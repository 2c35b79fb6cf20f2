#include <exception>
#include <locale>
#include <string>

#include <gtest/gtest.h>
#include <boost/exception_ptr.hpp>

#include <ko/filesystem.hpp>

#include "support/caught.hpp"

namespace ko::filesystem {
namespace {

using strings = std::vector<std::u16string>;
using testing::caught;

template <class Error>
void check(Error const& error, std::string const& name, int kind, std::u16string const& path,
           strings const& arguments = {}, int number = 0) {
    SCOPED_TRACE(name);
    Error const copy(error);
    EXPECT_EQ(copy.message_id(), "ko:filesystem:" + name);
    EXPECT_STREQ(static_cast<std::exception const&>(copy).what(), error.what());
    EXPECT_EQ(copy.kind(), kind);
    EXPECT_EQ(copy.path(), path);
    EXPECT_EQ(copy.arguments(), arguments);
    EXPECT_EQ(copy.system_error_number(), number);
    EXPECT_EQ(std::string(error.what()).rfind("ko:filesystem:" + name, 0), 0u);
    EXPECT_TRUE(kind == 1 || error.what() == error.message_id());
}

TEST(Exceptions, CarryWhatTheyWereMadeWith) {
    check(InvalidArgument("m", u"p", {u"a", u"b"}), "InvalidArgument", 1, u"p", {u"a", u"b"});
    check(InvalidOperation(), "InvalidOperation", 2, u"");
    check(FileNameTooLarge(u"p"), "FileNameTooLarge", 3, u"p");
    check(AccessDenied(u"p"), "AccessDenied", 6, u"p");
    check(PathNotFound(u"p"), "PathNotFound", 7, u"p");
    check(NotDirectoryError(u"p"), "NotDirectoryError", 8, u"p");
    check(DirectoryNotEmpty(u"p"), "DirectoryNotEmpty", 9, u"p");
    check(FileIsDirectory(u"p"), "FileIsDirectory", 10, u"p");
    check(FileExistsError(u"p"), "FileExistsError", 11, u"p");
    check(SystemError(u"p", {u"q"}, 5), "SystemError", 13, u"p", {u"q"}, 5);
}

struct grouping : std::numpunct<char> {
    std::string do_grouping() const override { return "\1"; }
};

TEST(Exceptions, InvalidArgumentShowsMessageAndEscapedPath) {
    struct {
        char const* message;
        std::u16string path;
        char const* text;
    } const rows[] = {
        {"", u"", ""},
        {"Empty Path not permitted", u"", ": Empty Path not permitted"},
        {"", u"/tmp/\u00E9", ": {/tmp/\\u00E9}"},
        {"m", u" ~\x7F", ": m: { ~\x7F}"},
        {"m", u"\t\x1F\x80\xD83D\xDE00\uFFFF", ": m: {\\u0009\\u001F\\u0080\\uD83D\\uDE00\\uFFFF}"},
        {"", std::u16string(u"a\0b", 3), ": {a\\u0000b}"},
    };
    std::locale const before = std::locale::global(std::locale(std::locale(), new grouping));
    for (auto const& row : rows) {
        InvalidArgument const error(row.message, row.path, {u"not shown"});
        for (int call = 1; call <= 2; ++call)
            EXPECT_EQ(error.what(), std::string("ko:filesystem:InvalidArgument") + row.text);
    }
    std::locale::global(before);
}

// One handler per class, so that a class which derived from another would be caught too early.
TEST(Exceptions, AreCapturedWithTheirClass) {
    boost::exception_ptr captured;
    try {
        static_cast<void>(status(u"/etc/passwd/x"));
    } catch (PathNotFound const&) {
        FAIL();
    } catch (FsysExceptionBase const&) {
        captured = boost::current_exception();
    }
    ASSERT_TRUE(captured);
    auto const error = caught<NotDirectoryError>([&] { boost::rethrow_exception(captured); });
    ASSERT_TRUE(error);
    EXPECT_STREQ(error->what(), "ko:filesystem:NotDirectoryError");
}

}  // namespace
}  // namespace ko::filesystem
