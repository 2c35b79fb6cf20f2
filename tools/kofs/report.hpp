#pragma once

#include <exception>
#include <iosfwd>
#include <string>

#include <ko/filesystem.hpp>
#include <nlohmann/json.hpp>

#include "command.hpp"

namespace kofs {

/// Runs a command for its operands, and prints answers and failures. Returns the exit status: 1 after
/// a failure or if an answer is no or nothing, 2 after wrong usage.
int run(command const& chosen, arguments const& given);

/// Reports a failure. Returns 2 if it is wrong usage, else 1.
int report_failure(arguments const& given, std::exception const& error);

/// Prints a path, followed by a newline, or by a zero byte with --print0.
void print_path(arguments const& given, std::string const& path);

/// Prints the command, its operands, the member `name` and those of `more`, an object, as one JSON
/// object on one line.
void print_json(arguments const& given, char const* name, json const& value,
                json const& more = json::object());

json json_of(std::exception const& error);

/// A failure at an entry of a tree that is being copied.
class entry_failure : public std::exception {
public:
    /// `from` is empty before the first entry. `reason` replaces that of the failure if it isn't null.
    entry_failure(std::exception const& error, std::u16string const& from, std::u16string const& to,
                  char const* reason);

    char const* what() const noexcept override { return what_.c_str(); }
    json const& described() const noexcept { return described_; }

private:
    std::string what_;
    json described_;
};

/// Prints an object, one line for each member.
void print_rows(std::ostream& out, json const& object);

/// `text` in UTF-8, with control characters, line ends and bidirectional marks escaped.
std::string shown(std::u16string const& text);

/// `text` in UTF-8 for standard output: escaped on a terminal only.
std::string printed(std::u16string const& text);

/// `operand` as passed to the library: a leading tilde is part of the name, unless --expand is given.
std::u16string handed_on(arguments const& given, std::u16string const& operand);

}  // namespace kofs
