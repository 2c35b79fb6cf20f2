#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

#include <ko/filesystem.hpp>

#include "json.hpp"

namespace kofs {

/// `text` as a terminal takes it: UTF-8, control characters and what has no UTF-8 escaped.
std::string shown(std::u16string const& text);

/// A mode as "rwxr-xr-x", with s, t, S and T as ls(1) has them.
std::string rwx(std::uint32_t permissions);

/// What a status query has found.
void print_status(ko::filesystem::file_status const& found, std::ostream& out);

/// Class, message, path, arguments and number of a failure.
void print_error(std::ostream& out, ko::filesystem::FsysExceptionBase const& error);

/// The same as JSON.
json status_json(ko::filesystem::file_status const& found);
json status_json(ko::filesystem::file_status_light const& found);
json error_json(ko::filesystem::FsysExceptionBase const& error);

/// All there is to say of the path `text`, as UTF-8 from the command line: its native form, its
/// parts, what exists there. Failures go to `errors`. False when nothing is there or a query
/// failed.
bool describe(std::string const& text, std::ostream& out, std::ostream& errors);

/// The same as JSON; failures are thrown.
json description_json(std::string const& text, bool& found);

}  // namespace kofs
