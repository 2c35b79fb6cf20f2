#include <ko/filesystem/exceptions/fsys_exception_base.hpp>

#include <cerrno>
#include <system_error>

namespace ko::filesystem {

FsysExceptionBase::FsysExceptionBase(char const* message_id, int kind, std::u16string const& path,
                                     std::vector<std::u16string> const& arguments,
                                     int system_error_number)
    : message_id_(message_id),
      kind_(kind),
      path_(path),
      arguments_(arguments),
      system_error_number_(system_error_number) {}

FsysExceptionBase::~FsysExceptionBase() = default;

char const* FsysExceptionBase::what() const noexcept { return message_id_.c_str(); }

std::error_code FsysExceptionBase::code() const noexcept {
    auto const number = [this] {
        switch (kind_) {
            case error_kind::invalid_argument: return EINVAL;
            case error_kind::invalid_operation: return ENOSYS;
            case error_kind::file_name_too_large: return ENAMETOOLONG;
            case error_kind::access_denied: return EACCES;
            case error_kind::path_not_found: return ENOENT;
            case error_kind::not_directory_error: return ENOTDIR;
            case error_kind::directory_not_empty: return ENOTEMPTY;
            case error_kind::file_is_directory: return EISDIR;
            case error_kind::file_exists_error: return EEXIST;
            default: return static_cast<int>(system_error_number_);
        }
    };
    return {number(), std::system_category()};
}

}  // namespace ko::filesystem
