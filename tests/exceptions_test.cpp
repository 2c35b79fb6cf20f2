#include <cstring>
#include <new>
#include <stdexcept>
#include <typeinfo>

#include <boost/exception/enable_current_exception.hpp>
#include <boost/exception_ptr.hpp>

#include "support/outcome.hpp"

namespace ko::filesystem::test_support::exceptions_test {

using strings = std::vector<std::u16string>;

template <class Error>
void check(Error const& error, std::string const& name, int kind, int code,
           std::u16string const& path, strings const& arguments = {}, int number = 0) {
    Error const copy(error);
    EXPECT_EQ(joined(copy.message_id(), copy.kind(), copy.path(), copy.system_error_number()),
              joined("ko:filesystem:" + name, kind, path, number));
    EXPECT_EQ(copy.code(), std::error_code(code, std::system_category())) << name;
    EXPECT_EQ(copy.arguments(), arguments) << name;
    EXPECT_EQ(kind == 1 ? copy.message_id() : error.what(), copy.message_id());
}

TEST(Exceptions, CarryWhatTheyWereMadeWith) {
    check(InvalidArgument("m", u"p", {u"a", u"b"}), "InvalidArgument", 1, EINVAL, u"p",
          {u"a", u"b"});
    check(InvalidOperation(), "InvalidOperation", 2, ENOSYS, u"");
    check(FileNameTooLarge(u"p"), "FileNameTooLarge", 3, ENAMETOOLONG, u"p");
    check(AccessDenied(u"p"), "AccessDenied", 6, EACCES, u"p");
    check(PathNotFound(u"p"), "PathNotFound", 7, ENOENT, u"p");
    check(NotDirectoryError(u"p"), "NotDirectoryError", 8, ENOTDIR, u"p");
    check(DirectoryNotEmpty(u"p"), "DirectoryNotEmpty", 9, ENOTEMPTY, u"p");
    check(FileIsDirectory(u"p"), "FileIsDirectory", 10, EISDIR, u"p");
    check(FileExistsError(u"p"), "FileExistsError", 11, EEXIST, u"p");
    check(SystemError(u"p", {u"q"}, EIO), "SystemError", 13, EIO, u"p", {u"q"}, EIO);
}

TEST(Exceptions, InvalidArgumentShowsMessageAndEscapedPath) {
    auto const check_what = [](char const* message, char16_t const* path, std::string const& text) {
        InvalidArgument const error(message, path, {u"not shown"});
        for (int call = 1; call <= 2; ++call)
            EXPECT_EQ(error.what(), "ko:filesystem:InvalidArgument: " + text);
    };
    check_what("Empty Path not permitted", u"", "Empty Path not permitted");
    check_what("m", u" /\u00E9~\x7F", "m: { /\\u00E9~\x7F}");
    check_what("", u"\t\x1F\x80\xD83D\xDE00\uFFFF", R"({\u0009\u001F\u0080\uD83D\uDE00\uFFFF})");
}

TEST(Exceptions, AreDescribedInOneLine) {
    std::u16string bad;
    std::string bad8;
    for (std::string const code :
         {"0000", "000A", "001F", "007F", "0085", "009F", "061C", "200E", "200F", "2028", "2029",
          "202A", "202B", "202C", "202D", "202E", "2066", "2067", "2068", "2069", "D83D"}) {
        bad += static_cast<char16_t>(std::stoi(code, nullptr, 16));
        bad8 += "\\u" + code;
    }
    EXPECT_EQ(describe(PathNotFound(u"\u6F22 \xD83D\xDE00")), "cannot find \u6F22 \U0001F600");
    EXPECT_EQ(describe(InvalidArgument("a\r\xFF", bad, {})), "a\\u000D\uFFFD: " + bad8);
    EXPECT_EQ(describe(InvalidArgument("", u"p", {bad})), "invalid argument: p, " + bad8);
    EXPECT_EQ(describe(SystemError(u"p", {u""}, ELOOP)), std::strerror(ELOOP) + std::string(": p"));
    std::exception const& own = PathNotFound(u"p");
    EXPECT_EQ(describe(own) + describe(std::runtime_error("\n\xFF")), "cannot find p\\u000A\uFFFD");
}

TEST(Exceptions, BecomeErrorCodes) {
    std::error_code code(EIO, std::generic_category());
    EXPECT_TRUE(attempt(code, [] { return exists(u"/"); }) && !code);
    EXPECT_EQ(attempt(code, [] { return file_size(u"/"); }), 0u);
    EXPECT_EQ(code, std::error_code(EISDIR, std::system_category()));
    auto const from_std = std::make_error_code(std::errc::value_too_large);
    attempt(code, [&] { throw std::filesystem::filesystem_error("", from_std); });
    EXPECT_EQ(code, from_std);
    EXPECT_THROW(attempt(code, [] { throw std::bad_alloc(); }), std::bad_alloc);
    EXPECT_THROW(attempt(code, [] { throw SystemError(u"", {}, 0); }), SystemError);
}

// With some compilers Boost captures any exception: the type shows that the library threw it in the
// right form.
TEST(Exceptions, AreCapturedWithTheirClass) {
    boost::exception_ptr captured;
    std::thread([&captured] {
        try {
            read_symlink(u"/");
        } catch (FsysExceptionBase const&) {
            captured = boost::current_exception();
        }
    }).join();
    ASSERT_TRUE(captured);
    try {
        boost::rethrow_exception(captured);
    } catch (InvalidArgument const& error) {
        check(error, "InvalidArgument", 1, EINVAL, u"/", {u""});
        EXPECT_EQ(typeid(error), typeid(boost::enable_current_exception(error)));
    }
}

}  // namespace ko::filesystem::test_support::exceptions_test
