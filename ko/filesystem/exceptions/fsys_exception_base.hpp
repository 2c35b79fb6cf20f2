#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <system_error>
#include <vector>

#include <ko/filesystem/config.hpp>

namespace ko::filesystem {

/// The values of `FsysExceptionBase::kind`, one for each class. 4, 5 and 12 are reserved.
struct error_kind {
    enum value : std::int32_t {
        invalid_argument = 1,
        invalid_operation = 2,
        file_name_too_large = 3,
        access_denied = 6,
        path_not_found = 7,
        not_directory_error = 8,
        directory_not_empty = 9,
        file_is_directory = 10,
        file_exists_error = 11,
        system_error = 13
    };
};

/// The base of all exceptions by which the library reports failures. Never thrown itself: catch it
/// to catch them all, except two of the libraries below: `copy` of a tree throws
/// boost::filesystem::filesystem_error if it can't list a directory, `rename` to another file
/// system std::filesystem::filesystem_error if times can't be preserved. Lack of memory is
/// std::bad_alloc, as everywhere.
///
/// Every exception is thrown in a form that `boost::current_exception()` can capture and rethrow
/// with its exact class.
class KO_FILESYSTEM_API FsysExceptionBase : public std::exception {
public:
    ~FsysExceptionBase() override = 0;

    /// The message identifier.
    char const* what() const noexcept override;

    /// "ko:filesystem:" and the name of the class.
    std::string const& message_id() const noexcept { return message_id_; }

    /// The number of the class, one of `error_kind`.
    std::int32_t kind() const noexcept { return kind_; }

    /// The path that caused the failure; may be empty.
    std::u16string const& path() const noexcept { return path_; }

    /// Further texts. An InvalidArgument or SystemError for a failed system call has one: the
    /// second path of a call on two paths, else an empty text. The other classes have none.
    std::vector<std::u16string> const& arguments() const noexcept { return arguments_; }

    /// The errno value of a SystemError; 0 in every other class.
    std::int32_t system_error_number() const noexcept { return system_error_number_; }

    /// The error number of the failure in the system's category, to be compared with std::errc:
    /// that of a SystemError, else the one that the class stands for (ENOENT for PathNotFound).
    /// EINVAL for every InvalidArgument, also one of a check of the library; ENOSYS for
    /// InvalidOperation.
    ///
    /// if (error.code() == std::errc::permission_denied) skip(entry);
    [[nodiscard]] std::error_code code() const noexcept;

protected:
    FsysExceptionBase(char const* message_id, int kind, std::u16string const& path,
                      std::vector<std::u16string> const& arguments, int system_error_number);
    FsysExceptionBase(FsysExceptionBase const&) = default;
    FsysExceptionBase& operator=(FsysExceptionBase const&) = default;

private:
    std::string message_id_;
    std::int32_t kind_;
    std::u16string path_;
    std::vector<std::u16string> arguments_;
    std::int32_t system_error_number_;
};

}  // namespace ko::filesystem
