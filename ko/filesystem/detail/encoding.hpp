#pragma once

#include <string>

#include <ko/filesystem/config.hpp>

/// Conversion between the UTF-16 of the interface and the UTF-8 of the operating system.
///
/// No function here throws for bad input; lack of memory is std::bad_alloc. U+0000 is converted as
/// any other unit. Each thread has converters of its own, opened by its first text that is longer
/// than 259 units or not ASCII, and closed when the thread ends. One that could not be opened, for want
/// of descriptors (EMFILE) or of memory, is not tried again: for the rest of the thread's life every
/// such text converts to an empty one. Do not convert in the destructor of a static object, which may
/// run after theirs.
namespace ko::filesystem::detail {

/// `s` as UTF-8. An unpaired surrogate becomes U+FFFD (EF BF BD), but an unpaired high surrogate at
/// the very end makes the whole result empty, as does a system without the converter.
KO_FILESYSTEM_API std::string to_filesystem(std::u16string const& s);

/// The UTF-8 text `s` as UTF-16. Each byte that is not part of valid UTF-8 becomes one U+FFFD.
/// Empty only when `s` is, or on a system without the converter.
KO_FILESYSTEM_API std::u16string from_filesystem(std::string const& s);

/// `s`, already in native form, as the system calls take it: the same as `to_filesystem`.
KO_FILESYSTEM_API std::string make_native_access_form(std::u16string const& s);

/// A copy of `s`: on POSIX the access form of a native text is the text itself.
KO_FILESYSTEM_API std::string make_access_form(std::string const& s);

}  // namespace ko::filesystem::detail
