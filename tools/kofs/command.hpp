#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace kofs {

using json = nlohmann::ordered_json;

/// Wrong usage: what() says what is wrong with it.
struct usage_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct option {
    char const* name;
    char const* value;  ///< what it takes, as the help names it; null for a switch
    char const* help;
    bool exclusive = false;  ///< excludes the command's other exclusive options
};

/// What a command was given.
struct arguments {
    std::string command;
    bool json = false;  ///< print JSON, on standard output
    std::vector<std::string> operands;
    std::map<std::string, std::vector<std::string>> options;  ///< by name: the values in order

    bool has(char const* option) const { return options.count(option) != 0; }
};

/// What a command does, and so how it is run and what is printed.
enum class nature {
    answers,     ///< prints an answer; a failure for one operand does not stop it
    acts,        ///< prints nothing
    takes_time,  ///< acts, perhaps for so long that the time is shown
    lists,       ///< prints answers one by one, and gives the exit status
    narrates,    ///< prints by itself, without JSON, and gives the exit status
};

struct command {
    char const* name;
    char const* operands;  ///< as "FROM TO", "PATH [BASE]", "PATH...", which runs it for each
    char const* help;
    json (*run)(arguments const&);  ///< gives the answer, if it is to give one
    nature kind;
    std::vector<option> options;
};

}  // namespace kofs
