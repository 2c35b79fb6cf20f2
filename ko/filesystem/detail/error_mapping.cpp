#include <ko/filesystem/detail/error_mapping.hpp>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include <ko/filesystem/detail/encoding.hpp>
#include <ko/filesystem/exceptions/invalid_argument.hpp>
#include <ko/filesystem/exceptions/path_errors.hpp>
#include <ko/filesystem/exceptions/throw.hpp>

namespace ko::filesystem::detail {

namespace {

/// The path for the report. A conversion that fails must not hide the failure that is reported:
/// each byte is widened then, with its sign, so that bytes from 0x80 on become U+FF80 to U+FFFF.
std::u16string reported(std::string_view path8) {
    try {
        return from_filesystem(std::string(path8));
    } catch (std::exception const&) {
        std::u16string widened;
        std::transform(path8.begin(), path8.end(), std::back_inserter(widened), [](char byte) {
            return static_cast<char16_t>(static_cast<signed char>(byte));
        });
        return widened;
    }
}

/// The one argument, which is there even when it is empty.
std::vector<std::u16string> reported_argument(std::string_view path8) {
    return {path8.empty() ? std::u16string() : reported(path8)};
}

}  // namespace

// All that is made for an exception goes before it is thrown: what is left for the unwinding to
// destroy costs more than the rest of the report.
void throw_errno_exception(int errnum, std::string_view path1, std::string_view path2) {
    switch (errnum) {
        case ENOENT: throw cloneable(PathNotFound(reported(path1)));
        case EACCES: throw cloneable(AccessDenied(reported(path1)));
        case EEXIST: throw cloneable(FileExistsError(reported(path1)));
        case ENOTDIR: throw cloneable(NotDirectoryError(reported(path1)));
        case EISDIR: throw cloneable(FileIsDirectory(reported(path1)));
        case EINVAL:
            throw cloneable(InvalidArgument{"", reported(path1), reported_argument(path2)});
        case ENAMETOOLONG: throw cloneable(FileNameTooLarge(reported(path1)));
        case ENOTEMPTY: throw cloneable(DirectoryNotEmpty(reported(path1)));
        default: throw cloneable(SystemError{reported(path1), reported_argument(path2), errnum});
    }
}

}  // namespace ko::filesystem::detail
