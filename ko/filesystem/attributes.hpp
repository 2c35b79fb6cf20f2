#pragma once

#include <cstdint>
#include <string>

#include <boost/date_time/posix_time/ptime.hpp>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/path.hpp>

/// Reading and setting single attributes of a file. Links are followed. Unlike with `status`, a
/// missing path is an error here, and every error names its path.
///
/// Each function throws
///   InvalidArgument   `p` is empty ("Empty Path not permitted"); path(): empty
///   the class of the error number for every other failure; path(): `p`
/// and what its own comment adds.
namespace ko::filesystem {

/// The size of the regular file `p` in bytes.
/// Throws FileIsDirectory for a directory, and InvalidArgument, as for EINVAL, for any other type.
[[nodiscard]] KO_FILESYSTEM_API std::uint64_t file_size(upath const& p);
/// The same for text, converted to native form first: leading ~ expanded, // collapsed.
[[nodiscard]] KO_FILESYSTEM_API std::uint64_t file_size(std::u16string const& p);

/// Truncates the regular file `p` to `size` bytes, or extends it with zeros (truncate).
/// Throws a SystemError with EFBIG for a size that the system can't represent, FileIsDirectory for
/// a directory.
KO_FILESYSTEM_API void resize_file(upath const& p, std::uint64_t size);
/// The same for text, converted to native form first.
KO_FILESYSTEM_API void resize_file(std::u16string const& p, std::uint64_t size);

/// The number of hard links to the file or directory `p`.
[[nodiscard]] KO_FILESYSTEM_API std::uint64_t hard_link_count(upath const& p);
/// The same for text, converted to native form first.
[[nodiscard]] KO_FILESYSTEM_API std::uint64_t hard_link_count(std::u16string const& p);

/// The time of the last write to `p`, in UTC, as in `status`.
[[nodiscard]] KO_FILESYSTEM_API boost::posix_time::ptime last_write_time(upath const& p);
/// The same for text, converted to native form first.
[[nodiscard]] KO_FILESYSTEM_API boost::posix_time::ptime last_write_time(std::u16string const& p);

/// Sets the time of the last write to `p`, in UTC, with the microseconds if the file system stores
/// them. The time of the last access does not change (utimensat).
/// Throws, after the check for an empty `p`, InvalidArgument "Time not valid" for a special value
/// such as `not_a_date_time`; path(): empty
KO_FILESYSTEM_API void last_write_time(upath const& p, boost::posix_time::ptime const& time);
/// The same for text, converted to native form first.
KO_FILESYSTEM_API void last_write_time(std::u16string const& p,
                                       boost::posix_time::ptime const& time);

}  // namespace ko::filesystem
