#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

#include <ko/filesystem.hpp>

#include "command.hpp"

namespace kofs {

/// The type of a `file_status` in words.
char const* type_name(std::uint32_t type);

/// A mode as "rwxr-xr-x", with s, t, S and T as ls(1) has them.
std::string rwx(std::uint32_t permissions);

/// What a status query has found; null for nothing.
json json_of(ko::filesystem::file_status const& found);
json json_of(ko::filesystem::file_status_light const& found);

/// The native form and the parts of a path, and what is there. The failure of a query is the member
/// "error", and null in place of its answer.
json status_of(std::u16string const& text);

/// The same as rows, without the failure.
void print_status(std::ostream& out, std::u16string const& text);

/// What becomes of `operand`, which is handed on as `text`, and of each element on the way.
json explanation(std::string const& operand, std::u16string const& text);

}  // namespace kofs
