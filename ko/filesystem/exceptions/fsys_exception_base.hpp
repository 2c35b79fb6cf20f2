#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <vector>

#include <ko/filesystem/config.hpp>

namespace ko::filesystem {

/// The base of all exceptions by which the library reports failures. Never thrown itself: catch it
/// to catch them all.
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

    /// The number of the class: 1 InvalidArgument, 2 InvalidOperation, 3 FileNameTooLarge,
    /// 6 AccessDenied, 7 PathNotFound, 8 NotDirectoryError, 9 DirectoryNotEmpty,
    /// 10 FileIsDirectory, 11 FileExistsError, 13 SystemError. The others are reserved.
    std::int32_t kind() const noexcept { return kind_; }

    /// The path that caused the failure; may be empty.
    std::u16string const& path() const noexcept { return path_; }

    /// Further texts. An InvalidArgument or SystemError for a failed system call has one: the
    /// second path of a call on two paths, else an empty text. The other classes have none.
    std::vector<std::u16string> const& arguments() const noexcept { return arguments_; }

    /// The errno value of a SystemError; 0 in every other class.
    std::int32_t system_error_number() const noexcept { return system_error_number_; }

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
