#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

#include <boost/date_time/posix_time/ptime.hpp>
#include <ko/filesystem.hpp>

#include "command.hpp"

namespace kofs {

/// The type of a `file_status` in words.
char const* type_name(std::uint32_t type);

/// The same as the letter of ls(1).
char type_letter(std::uint32_t type);

/// A time in UTC like "2024-01-31T12:00:00Z"; "-" if it is out of range.
std::string iso_seconds(boost::posix_time::ptime const& time);

/// A mode as "rwxr-xr-x", with s, t, S and T like ls(1).
std::string rwx(std::uint32_t permissions);

/// The result of a status query; null if nothing was found.
json json_of(ko::filesystem::file_status const& found);
json json_of(ko::filesystem::file_status_light const& found);

/// The native form and the parts of a path, and its status. If a query fails, its answer is null and
/// the member "error" has the failure.
json status_of(std::u16string const& text);

/// The same as rows, without the failure.
void print_status(std::ostream& out, std::u16string const& text);

/// How `operand`, which the library gets as `text`, is converted, and what each element of the path is.
json explanation(std::string const& operand, std::u16string const& text);

}  // namespace kofs
