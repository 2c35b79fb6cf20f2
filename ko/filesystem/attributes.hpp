#pragma once

#include <cstdint>
#include <string>

#include <boost/date_time/posix_time/ptime.hpp>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/path.hpp>

/// Single attributes of a file, asked for and set. Links are followed. Unlike `status`, a missing
/// path is an error here, and every error names its path.
///
/// Each throws
///   InvalidArgument   `p` is empty ("Empty Path not permitted"); path(): empty
///   the class of the error number for every other failure; path(): `p`
/// and what is said of it.
namespace ko::filesystem {

/// The size of the regular file `p` in bytes.
/// Throws FileIsDirectory for a directory and InvalidArgument, as for EINVAL, for what is neither.
KO_FILESYSTEM_API std::uint64_t file_size(upath const& p);
/// The same for text, brought into native form first: leading ~ expanded, // collapsed.
KO_FILESYSTEM_API std::uint64_t file_size(std::u16string const& p);

/// Cuts the regular file `p` off at `size` bytes, or appends zeros up to there (truncate).
/// Throws a SystemError with EFBIG for a size that the system has no number for, FileIsDirectory for
/// a directory.
KO_FILESYSTEM_API void resize_file(upath const& p, std::uint64_t size);
/// The same for text, brought into native form first.
KO_FILESYSTEM_API void resize_file(std::u16string const& p, std::uint64_t size);

/// How many names the file or directory `p` has.
KO_FILESYSTEM_API std::uint64_t hard_link_count(upath const& p);
/// The same for text, brought into native form first.
KO_FILESYSTEM_API std::uint64_t hard_link_count(std::u16string const& p);

/// When `p` was last written to, in UTC, as `status` tells it.
KO_FILESYSTEM_API boost::posix_time::ptime last_write_time(upath const& p);
/// The same for text, brought into native form first.
KO_FILESYSTEM_API boost::posix_time::ptime last_write_time(std::u16string const& p);

/// Sets the time of the last write of `p`, in UTC, to the microsecond where the file system keeps
/// that; the time of the last access stays (utimensat).
/// Throws, after the check for an empty `p`, InvalidArgument "Time not valid" for a special value
/// such as `not_a_date_time`; path(): empty
KO_FILESYSTEM_API void last_write_time(upath const& p, boost::posix_time::ptime const& time);
/// The same for text, brought into native form first.
KO_FILESYSTEM_API void last_write_time(std::u16string const& p,
                                       boost::posix_time::ptime const& time);

}  // namespace ko::filesystem
