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

/// The path for the report. A failed conversion must not hide the failure being reported: in that
/// case each byte is sign-extended, so that bytes from 0x80 become U+FF80 to U+FFFF.
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

/// The only argument, present even if it is empty.
std::vector<std::u16string> reported_argument(std::string_view path8) {
    return {path8.empty() ? std::u16string() : reported(path8)};
}

// Temporaries are destroyed before the throw, and each class is thrown by a function of its own:
// objects to destroy, and tables to search for them, make unwinding cost more than the rest of a
// report.

template <class Error>
[[noreturn, gnu::noinline]] void throw_with_path(std::string_view path8) {
    throw cloneable(Error(reported(path8)));
}

[[noreturn]] void throw_invalid_path(std::string_view path1, std::string_view path2) {
    throw cloneable(InvalidArgument{"", reported(path1), reported_argument(path2)});
}

[[noreturn]] void throw_system_error(int errnum, std::string_view path1, std::string_view path2) {
    throw cloneable(SystemError{reported(path1), reported_argument(path2), errnum});
}

}  // namespace

void throw_errno_exception(int errnum, std::string_view path1, std::string_view path2) {
    switch (errnum) {
        case ENOENT: throw_with_path<PathNotFound>(path1);
        case EACCES: throw_with_path<AccessDenied>(path1);
        case EEXIST: throw_with_path<FileExistsError>(path1);
        case ENOTDIR: throw_with_path<NotDirectoryError>(path1);
        case EISDIR: throw_with_path<FileIsDirectory>(path1);
        case EINVAL: throw_invalid_path(path1, path2);
        case ENAMETOOLONG: throw_with_path<FileNameTooLarge>(path1);
        case ENOTEMPTY: throw_with_path<DirectoryNotEmpty>(path1);
        default: throw_system_error(errnum, path1, path2);
    }
}

}  // namespace ko::filesystem::detail
