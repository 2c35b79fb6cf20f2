// Internal: not installed.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

#include <boost/date_time/posix_time/ptime.hpp>
#include <boost/function/function_fwd.hpp>

#include <ko/filesystem/file_status.hpp>

namespace ko::filesystem::detail {

using stat_function = int (*)(char const*, struct stat*);

/// Fills `found` by `call`, stat or lstat, on `path8`. Returns the error number of a failure, or 0.
int examine(stat_function call, char const* path8, struct stat& found) noexcept;

/// The same by lstat on the name `name8` in the open directory `base`.
int examine_below(int base, char const* name8, struct stat& found) noexcept;

/// Whether `error`, reported by stat, means that the path does not exist.
bool means_absent(int error) noexcept;

/// Whether stat finds `path8`; false for ENOENT and ENOTDIR.
/// Throws the class of every other error number; path(): `path8`
bool exists_by_stat(char const* path8);

/// The same by the rules of `exists`, which count EINVAL as absent as well, with the status of what
/// exists in `found`.
bool exists_at(stat_function call, char const* path8, struct stat& found);

/// The same for text in native form; false if it is empty or contains U+0000.
bool exists_at(stat_function call, std::u16string const& native, struct stat& found);

// The times of `found`, whose members have other names on macOS.
timespec const& access_time(struct stat const& found) noexcept;
timespec const& write_time(struct stat const& found) noexcept;
timespec const& status_change_time(struct stat const& found) noexcept;

/// A ptime counts microseconds from day 0 of the Julian day numbers; 1970-01-01 is day 2440588.
constexpr std::int64_t julian_microseconds_of_epoch = 2440588LL * 86400 * 1'000'000;

/// The count of `time`, which must not be a special value.
std::int64_t julian_microseconds(boost::posix_time::ptime const& time);

/// The time `count` microseconds after 1970, or an infinity if a ptime can't hold it.
boost::posix_time::ptime ptime_of(std::int64_t count);

/// `time` in the form of `file_status`.
boost::posix_time::ptime to_ptime(timespec const& time);

/// The type of `file_status` for the type bits of a mode.
std::uint32_t translated_type(mode_t mode) noexcept;

/// `found` in the form of `file_status`.
file_status to_file_status(struct stat const& found);

/// The status of `path8` by `examine`; the not-found value for ENOENT and for `other_absent`.
/// Throws the class of every other error number; path(): `reported`
file_status status_at(stat_function call, char const* path8, int other_absent,
                      std::string_view reported);

/// The status from a bound stat or lstat call; the not-found value for ENOENT.
/// Throws the class of every other error number; path(): empty, since only the call knows it
file_status status_from_stat(boost::function<int(struct stat*)> const& stat_call);

}  // namespace ko::filesystem::detail
