#pragma once

#include <exception>
#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/exceptions/fsys_exception_base.hpp>

namespace ko::filesystem {

/// Describes a failure for people, in one line of UTF-8 without a line end: the meaning of the
/// class, the message of an InvalidArgument, or the system's text for the number of a SystemError;
/// then the path and the arguments, unless empty. Programs should distinguish failures by class:
/// this text may change.
///
/// Characters that would break the line or not be visible (control characters, U+2028 and U+2029,
/// marks and overrides of the writing direction, unpaired surrogates) are escaped as by
/// `printHelper` of InvalidArgument.
///
/// describe(PathNotFound(u"/a/b"));  // "cannot find /a/b"
[[nodiscard]] KO_FILESYSTEM_API std::string describe(FsysExceptionBase const& error);

/// The same for every exception: for one that is not of the library its `what()`, in which bytes
/// that are not UTF-8 become U+FFFD.
///
/// catch (std::exception const& error) { std::cerr << describe(error) << '\n'; }
[[nodiscard]] KO_FILESYSTEM_API std::string describe(std::exception const& error);

}  // namespace ko::filesystem
