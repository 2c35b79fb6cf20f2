#pragma once

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
/// overrides of the writing direction, unpaired surrogates) are escaped as by `printHelper` of
/// InvalidArgument.
///
/// describe(PathNotFound(u"/a/b"));  // "cannot find /a/b"
KO_FILESYSTEM_API std::string describe(FsysExceptionBase const& error);

}  // namespace ko::filesystem
