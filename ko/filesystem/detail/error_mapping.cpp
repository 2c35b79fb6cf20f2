#include <ko/filesystem/detail/error_mapping.hpp>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <iterator>
#include <vector>

#include <ko/filesystem/detail/encoding.hpp>
#include <ko/filesystem/exceptions/invalid_argument.hpp>
#include <ko/filesystem/exceptions/path_errors.hpp>
#include <ko/filesystem/exceptions/throw.hpp>

namespace ko::filesystem::detail {

namespace {

/// The path for the report. A conversion that fails must not hide the failure that is reported:
/// each byte is widened then, with its sign, so that bytes from 0x80 on become U+FF80 to U+FFFF.
std::u16string reported(std::string const& path8) {
    try {
        return from_filesystem(path8);
    } catch (std::exception const&) {
        std::u16string widened;
        std::transform(path8.begin(), path8.end(), std::back_inserter(widened), [](char byte) {
            return static_cast<char16_t>(static_cast<signed char>(byte));
        });
        return widened;
    }
}

}  // namespace

void throw_errno_exception(int errnum, std::string const& path1, std::string const& path2) {
    std::u16string const path = reported(path1);
    std::vector<std::u16string> const arguments{path2.empty() ? std::u16string() : reported(path2)};
    switch (errnum) {
        case ENOENT: throw_cloneable(PathNotFound(path));
        case EACCES: throw_cloneable(AccessDenied(path));
        case EEXIST: throw_cloneable(FileExistsError(path));
        case ENOTDIR: throw_cloneable(NotDirectoryError(path));
        case EISDIR: throw_cloneable(FileIsDirectory(path));
        case EINVAL: throw_cloneable(InvalidArgument("", path, arguments));
        case ENAMETOOLONG: throw_cloneable(FileNameTooLarge(path));
        case ENOTEMPTY: throw_cloneable(DirectoryNotEmpty(path));
        default: throw_cloneable(SystemError(path, arguments, errnum));
    }
}

}  // namespace ko::filesystem::detail
