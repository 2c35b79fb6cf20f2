#pragma once

#include <climits>
#include <exception>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace kofs {

/// Wrong usage: what() says what is wrong with it.
class usage_error : public std::exception {
public:
    explicit usage_error(std::string message) : message_(std::move(message)) {}
    char const* what() const noexcept override { return message_.c_str(); }

private:
    std::string message_;
};

struct option_description {
    char const* name;
    char const* value;  ///< what it takes, as the help names it; null for a switch
    char const* help;
};

/// What a subcommand was given.
struct arguments {
    std::string command;
    bool json = false;  ///< print JSON, on standard output
    std::vector<std::string> operands;
    std::map<std::string, std::vector<std::string>> options;  ///< by name: the values in order

    bool has(char const* option) const { return options.count(option) != 0; }
};

/// What a subcommand does, which decides what is made of it on the way.
enum class nature {
    answers,     ///< prints an answer; a failure for one path keeps it from no other
    acts,        ///< has nothing to say
    takes_time,  ///< acts, perhaps for so long that the time is shown
    narrates,    ///< talks to people, and has no JSON
};

constexpr int any_number = INT_MAX;

/// One that takes any number of operands is run once for each of them.
struct command {
    char const* name;
    char const* operands;  ///< as the usage line shows them
    int least_operands;
    int most_operands;
    char const* help;
    std::vector<option_description> options;
    int (*run)(arguments const&);  ///< gives the exit status
    nature kind = nature::answers;
};

/// Runs the subcommand that the command line names and gives its exit status, or 2 after wrong
/// usage. Failures are reported, and `--help` is answered here.
int run_command_line(int argc, char** argv, std::vector<command> const& commands);

}  // namespace kofs
