#pragma once

#include <exception>
#include <string>

#include "command_line.hpp"
#include "json.hpp"

namespace kofs {

/// Prints what a command was asked, and the member `name`, as one JSON object on one line.
void print_json(arguments const& given, char const* name, json const& value);

/// Prints a text that is the answer; gives the exit status, as the others here do.
int print(arguments const& given, std::u16string const& result);

/// Prints a yes or no; no is a failure.
int answer(arguments const& given, bool yes);

/// Reports a failure of any kind; 2 when it is wrong usage.
int report_failure(arguments const& given, std::exception const& error);

}  // namespace kofs
