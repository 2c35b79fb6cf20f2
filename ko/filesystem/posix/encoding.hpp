// Internal: not installed.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ko::filesystem {

namespace posix::detail {

/// ASCII text of up to this many units is converted without iconv.
constexpr std::size_t fast_path_limit = 259;

/// `s` in the encoding `tocode`; empty if it can't be converted. The library always passes "UTF-8".
/// The first call in the process determines what replaces a bad unit: U+FFFD for "UTF-8", else the
/// ASCII substitute character.
std::string to_filesystem_native_impl(std::u16string const& s, char const* tocode);

/// Opens the converters of the calling thread. For whatever will hold many descriptors: opening one
/// may need a descriptor as well, and glibc doesn't try again in the whole process if it lacked one.
void open_converters();

}  // namespace posix::detail

namespace detail {

/// The UTF-8 text `s` as UTF-16; empty if any of it is malformed. For every name from the system
/// that the caller will use: with bytes replaced it would name another file.
std::u16string from_filesystem_strict(std::string_view s);

/// Appends the same to `result`, or nothing if any of `s` is malformed. Returns whether none is.
bool append_from_filesystem(std::string_view s, std::u16string& result);

}  // namespace detail

}  // namespace ko::filesystem
