#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace kofs {

using json = nlohmann::ordered_json;

/// Wrong usage, as explained by what().
struct usage_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct option {
    char const* name;
    char const* value;  ///< the name of its value, or its values like "a|b"; null for a flag
    char const* help;
    int group = 0;  ///< options of one group, other than 0, exclude each other
};

/// The parsed command line.
struct arguments {
    std::string command;
    bool json = false;  ///< print JSON, on standard output
    std::vector<std::string> operands;
    std::map<std::string, std::vector<std::string>> options;  ///< values in order, by name

    bool has(char const* option) const { return options.count(option) != 0; }
};

/// How a command is run and what is printed.
enum class nature {
    answers,     ///< prints an answer; goes on after an operand that fails
    acts,        ///< prints nothing; returns members for its line of JSON, if any
    takes_time,  ///< acts; shows the elapsed time if it takes long
    lists,       ///< prints answers one by one; returns the exit status
    narrates,    ///< prints by itself, without JSON; returns the exit status
};

struct command {
    char const* name;
    char const* operands;  ///< like "FROM TO", "PATH [BASE]"; "PATH..." runs it for each
    char const* help;
    json (*run)(arguments const&);  ///< returns the answer, if any
    nature kind;
    std::vector<option> options;
};

}  // namespace kofs
