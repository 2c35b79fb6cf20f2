#pragma once

#include <chrono>

#include <boost/date_time/posix_time/ptime.hpp>

#include <ko/filesystem/config.hpp>

/// Conversion between the times of the library, in UTC, and those of std::chrono, exact to the
/// microsecond.
namespace ko::filesystem {

/// Throws InvalidArgument "Time not valid" for a special value such as `not_a_date_time`, and for a
/// time that the clock can't hold: libstdc++'s ends in 1677 and 2262; path(): empty
[[nodiscard]] KO_FILESYSTEM_API std::chrono::system_clock::time_point to_time_point(
    boost::posix_time::ptime const& time);

/// `time`, rounded down to a microsecond.
/// Throws InvalidArgument "Time not valid" for a time that a ptime can't hold; path(): empty
///
/// last_write_time(p, to_ptime(std::chrono::system_clock::now()));
[[nodiscard]] KO_FILESYSTEM_API boost::posix_time::ptime to_ptime(
    std::chrono::system_clock::time_point time);

}  // namespace ko::filesystem
