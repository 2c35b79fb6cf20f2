#include <ko/filesystem/exceptions/path_errors.hpp>

namespace ko::filesystem {

InvalidOperation::InvalidOperation()
    : FsysExceptionBase("ko:filesystem:InvalidOperation", 2, {}, {}, 0) {}

FileNameTooLarge::FileNameTooLarge(std::u16string const& path)
    : FsysExceptionBase("ko:filesystem:FileNameTooLarge", 3, path, {}, 0) {}

AccessDenied::AccessDenied(std::u16string const& path)
    : FsysExceptionBase("ko:filesystem:AccessDenied", 6, path, {}, 0) {}

PathNotFound::PathNotFound(std::u16string const& path)
    : FsysExceptionBase("ko:filesystem:PathNotFound", 7, path, {}, 0) {}

NotDirectoryError::NotDirectoryError(std::u16string const& path)
    : FsysExceptionBase("ko:filesystem:NotDirectoryError", 8, path, {}, 0) {}

DirectoryNotEmpty::DirectoryNotEmpty(std::u16string const& path)
    : FsysExceptionBase("ko:filesystem:DirectoryNotEmpty", 9, path, {}, 0) {}

FileIsDirectory::FileIsDirectory(std::u16string const& path)
    : FsysExceptionBase("ko:filesystem:FileIsDirectory", 10, path, {}, 0) {}

FileExistsError::FileExistsError(std::u16string const& path)
    : FsysExceptionBase("ko:filesystem:FileExistsError", 11, path, {}, 0) {}

SystemError::SystemError(std::u16string const& path, std::vector<std::u16string> const& arguments,
                         int system_error_number)
    : FsysExceptionBase("ko:filesystem:SystemError", 13, path, arguments, system_error_number) {}

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
