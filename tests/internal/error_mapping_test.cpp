#include <cerrno>
#include <string>
#include <typeinfo>

#include <gtest/gtest.h>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/exceptions.hpp>
#include <ko/filesystem/exceptions/throw.hpp>

#include "support/caught.hpp"

namespace ko::filesystem::detail {
namespace {

using ko::filesystem::testing::caught;
using strings = std::vector<std::u16string>;
using strings8 = std::vector<std::string>;

template <class Error>
void check(int number, bool keeps_second_path) {
    SCOPED_TRACE(typeid(Error).name());
    SCOPED_TRACE(number);
    for (std::string const& second : strings8{"", "g"}) {
        auto const error = caught<Error>([&] { throw_errno_exception(number, "f\xFF", second); });
        ASSERT_TRUE(error);
        EXPECT_EQ(error->path(), u"f\uFFFD");
        std::u16string const second16(second.begin(), second.end());
        EXPECT_EQ(error->arguments(), keeps_second_path ? strings{second16} : strings{});
        bool const is_system_error = typeid(Error) == typeid(SystemError);
        EXPECT_EQ(error->system_error_number(), is_system_error ? number : 0);
    }
}

TEST(ErrorMapping, ChoosesTheClassByTheNumber) {
    check<PathNotFound>(ENOENT, false);
    check<AccessDenied>(EACCES, false);
    check<FileExistsError>(EEXIST, false);
    check<NotDirectoryError>(ENOTDIR, false);
    check<FileIsDirectory>(EISDIR, false);
    check<InvalidArgument>(EINVAL, true);
    check<FileNameTooLarge>(ENAMETOOLONG, false);
    check<DirectoryNotEmpty>(ENOTEMPTY, false);
    for (int const number : {EPERM, ELOOP, EROFS, ENOSPC, EXDEV, EBUSY, EIO, 0, -1, 12345})
        check<SystemError>(number, true);
    auto const error = caught<InvalidArgument>([] { throw_errno_exception(EINVAL, "x", {}); });
    ASSERT_TRUE(error);
    EXPECT_STREQ(error->what(), "ko:filesystem:InvalidArgument: {x}");
    EXPECT_TRUE(caught<InvalidOperation>([] { throw_invalid_operation_exception(); }));
}

}  // namespace
}  // namespace ko::filesystem::detail
