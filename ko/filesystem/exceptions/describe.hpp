#pragma once

#include <string>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/exceptions/fsys_exception_base.hpp>

namespace ko::filesystem {

/// What went wrong, for a person: one line in UTF-8, without a line end. What the class means, the
/// message of an InvalidArgument, or the system's text for the number of a SystemError; then the
/// path and the arguments that aren't empty. A program tells failures apart by their class: this
/// text may change.
///
/// What would break the line or hide in it (control characters, U+2028 and U+2029, overrides of the
/// writing direction, unpaired surrogates) is written as `printHelper` of InvalidArgument does.
///
/// describe(PathNotFound(u"/a/b"));  // "cannot find /a/b"
KO_FILESYSTEM_API std::string describe(FsysExceptionBase const& error);

}  // namespace ko::filesystem
