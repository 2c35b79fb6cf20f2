#include <ko/filesystem/exceptions/path_errors.hpp>

namespace ko::filesystem {

InvalidOperation::InvalidOperation()
    : FsysExceptionBase("ko:filesystem:InvalidOperation", error_kind::invalid_operation, {}, {},
                        0) {}

FileNameTooLarge::FileNameTooLarge(std::u16string const& path)
    : FsysExceptionBase("ko:filesystem:FileNameTooLarge", error_kind::file_name_too_large, path, {},
                        0) {}

AccessDenied::AccessDenied(std::u16string const& path)
    : FsysExceptionBase("ko:filesystem:AccessDenied", error_kind::access_denied, path, {}, 0) {}

PathNotFound::PathNotFound(std::u16string const& path)
    : FsysExceptionBase("ko:filesystem:PathNotFound", error_kind::path_not_found, path, {}, 0) {}

NotDirectoryError::NotDirectoryError(std::u16string const& path)
    : FsysExceptionBase("ko:filesystem:NotDirectoryError", error_kind::not_directory_error, path,
                        {}, 0) {}

DirectoryNotEmpty::DirectoryNotEmpty(std::u16string const& path)
    : FsysExceptionBase("ko:filesystem:DirectoryNotEmpty", error_kind::directory_not_empty, path,
                        {}, 0) {}

FileIsDirectory::FileIsDirectory(std::u16string const& path)
    : FsysExceptionBase("ko:filesystem:FileIsDirectory", error_kind::file_is_directory, path, {},
                        0) {}

FileExistsError::FileExistsError(std::u16string const& path)
    : FsysExceptionBase("ko:filesystem:FileExistsError", error_kind::file_exists_error, path, {},
                        0) {}

SystemError::SystemError(std::u16string const& path, std::vector<std::u16string> const& arguments,
                         int system_error_number)
    : FsysExceptionBase("ko:filesystem:SystemError", error_kind::system_error, path, arguments,
                        system_error_number) {}

// Defined here so that each class has one vtable and one type information, in this library.
InvalidOperation::~InvalidOperation() = default;
FileNameTooLarge::~FileNameTooLarge() = default;
AccessDenied::~AccessDenied() = default;
PathNotFound::~PathNotFound() = default;
NotDirectoryError::~NotDirectoryError() = default;
DirectoryNotEmpty::~DirectoryNotEmpty() = default;
FileIsDirectory::~FileIsDirectory() = default;
FileExistsError::~FileExistsError() = default;
SystemError::~SystemError() = default;

}  // namespace ko::filesystem
