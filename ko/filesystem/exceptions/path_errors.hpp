#pragma once

#include <string>
#include <vector>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/exceptions/fsys_exception_base.hpp>

namespace ko::filesystem {

// None of these classes derives from another: a handler for one never catches another.

/// The operation does not exist on this platform. Has no path.
class KO_FILESYSTEM_API InvalidOperation : public FsysExceptionBase {
public:
    InvalidOperation();
    ~InvalidOperation() override;
};

/// A name or a path is longer than the system allows (ENAMETOOLONG).
class KO_FILESYSTEM_API FileNameTooLarge : public FsysExceptionBase {
public:
    explicit FileNameTooLarge(std::u16string const& path);
    ~FileNameTooLarge() override;
};

/// Permission denied (EACCES). EPERM is a SystemError instead.
class KO_FILESYSTEM_API AccessDenied : public FsysExceptionBase {
public:
    explicit AccessDenied(std::u16string const& path);
    ~AccessDenied() override;
};

/// The path does not exist, or a directory above it does not (ENOENT).
class KO_FILESYSTEM_API PathNotFound : public FsysExceptionBase {
public:
    explicit PathNotFound(std::u16string const& path);
    ~PathNotFound() override;
};

/// Something other than a directory is where one is needed (ENOTDIR).
class KO_FILESYSTEM_API NotDirectoryError : public FsysExceptionBase {
public:
    explicit NotDirectoryError(std::u16string const& path);
    ~NotDirectoryError() override;
};

/// The directory is not empty (ENOTEMPTY).
class KO_FILESYSTEM_API DirectoryNotEmpty : public FsysExceptionBase {
public:
    explicit DirectoryNotEmpty(std::u16string const& path);
    ~DirectoryNotEmpty() override;
};

/// A directory is where something else is needed (EISDIR).
class KO_FILESYSTEM_API FileIsDirectory : public FsysExceptionBase {
public:
    explicit FileIsDirectory(std::u16string const& path);
    ~FileIsDirectory() override;
};

/// The path exists already (EEXIST).
class KO_FILESYSTEM_API FileExistsError : public FsysExceptionBase {
public:
    explicit FileExistsError(std::u16string const& path);
    ~FileExistsError() override;
};

/// Every other failure of the system, such as EPERM, ELOOP, EROFS, ENOSPC and EXDEV; see the error
/// number. The only argument is the second path of a call on two paths, else empty.
class KO_FILESYSTEM_API SystemError : public FsysExceptionBase {
public:
    SystemError(std::u16string const& path, std::vector<std::u16string> const& arguments,
                int system_error_number);
    ~SystemError() override;
};

}  // namespace ko::filesystem
