#pragma once

#include <string>

#include <ko/filesystem/config.hpp>

/// Conversion between the UTF-16 of the interface and the UTF-8 of the operating system.
///
/// No function here throws for bad input; lack of memory is std::bad_alloc. U+0000 is converted
/// like any other unit. Each thread has its own converters, opened by its first text that is longer
/// than 259 units or not ASCII, and closed when the thread ends. If one can't be opened, for lack
/// of descriptors (EMFILE) or memory, the thread does not try again: from then on every such text
/// converts to an empty one. Do not convert in static destructors.
namespace ko::filesystem::detail {

/// `s` as UTF-8. An unpaired surrogate becomes U+FFFD (EF BF BD), but an unpaired high surrogate at
/// the very end makes the whole result empty, as does a system that lacks the converter.
KO_FILESYSTEM_API std::string to_filesystem(std::u16string const& s);

/// The UTF-8 text `s` as UTF-16. Each byte that is not part of valid UTF-8 becomes one U+FFFD.
/// Empty only if `s` is, or on a system that lacks the converter.
KO_FILESYSTEM_API std::u16string from_filesystem(std::string const& s);

/// `s`, which is in native form, as passed to system calls: the same as `to_filesystem`.
KO_FILESYSTEM_API std::string make_native_access_form(std::u16string const& s);

/// A copy of `s`: on POSIX the access form of a native text is the text itself.
KO_FILESYSTEM_API std::string make_access_form(std::string const& s);

}  // namespace ko::filesystem::detail
