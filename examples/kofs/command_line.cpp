#include "command_line.hpp"

#include <getopt.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string_view>

#include "elapsed_time.hpp"
#include "result.hpp"

namespace kofs {

namespace {

constexpr int wrong_usage = 2;

option_description const json_option = {"json", nullptr,
                                        "Print every answer and every failure as a line of JSON"};
option_description const help_option = {"help", nullptr, "Tell about the command"};

/// All options that `of` takes; the help is the last.
std::vector<option_description> options_of(command const& of) {
    std::vector<option_description> all = of.options;
    if (of.kind != nature::narrates) all.push_back(json_option);
    all.push_back(help_option);
    return all;
}

/// `status`, or a failure when the output could not be written.
int finished(int status) {
    if (std::cout.flush()) return status;
    std::cerr << "kofs: the output could not be written\n";
    return status == EXIT_SUCCESS ? EXIT_FAILURE : status;
}

void print_row(std::ostream& out, std::string const& left, char const* right) {
    out << "  " << std::left << std::setw(30) << left << right << '\n';
}

void print_help(std::vector<command> const& commands, std::ostream& out) {
    out << "Usage: kofs [--json] COMMAND [OPTION...] [PATH...]\n"
           "Asks about files, and makes, moves, copies and removes them, through "
           "ko::filesystem.\n\nCommands:\n";
    for (command const& each : commands)
        print_row(out, std::string(each.name) + ' ' + each.operands, each.help);
    out << "\n'kofs COMMAND --help' tells more. A path may begin with ~ or ~name.\n\n"
           "With --json, before or behind the command, every line of standard output is an object\n"
           "with \"command\", \"operands\" and one of \"result\" (an answer), \"done\" (true, "
           "after\n"
           "something was done) and \"error\" (\"class\" and \"what\"; from the library also "
           "\"id\",\n"
           "\"path\", \"arguments\" and \"number\"). A command for any number of paths prints one "
           "for\n"
           "each.\n\n"
           "On a terminal, standard error shows the time that a copy, a move or a removal is "
           "taking\n"
           "beyond the first second, though not with --json.\n\n"
           "Exit status: 0 success, 1 failure, 2 wrong usage; 128 and the signal's number when a\n"
           "signal has ended the tour.\n";
}

void print_help(command const& of) {
    std::cout << "Usage: kofs " << of.name << " [OPTION...]" << (*of.operands == '\0' ? "" : " ")
              << of.operands << '\n'
              << of.help << "\n\nOptions:\n";
    for (option_description const& each : options_of(of)) {
        std::string const value = each.value == nullptr ? "" : std::string("=") + each.value;
        print_row(std::cout, "--" + (each.name + value), each.help);
    }
}

/// Adds what the command line says to `given`. True when it asks for help.
bool parse(command const& of, int argc, char** argv, arguments& given) {
    std::vector<::option> table;
    for (option_description const& each : options_of(of))
        table.push_back(
            {each.name, each.value == nullptr ? no_argument : required_argument, nullptr, 0});
    table.back().val = 'h';
    table.push_back({nullptr, 0, nullptr, 0});

    // A complaint waits for the end, since --json may follow and decide how it is printed.
    std::string complaint;
    bool help = false;
    opterr = 0;
    for (int index = -1, found = 0;
         (found = getopt_long(argc, argv, ":h", table.data(), &index)) != -1;) {
        std::string const text = argv[std::max(optind - 1, 1)];
        if (found == ':' && complaint.empty()) complaint = text + " needs a value";
        if (found == '?' && complaint.empty()) complaint = "no such option: " + text;
        if (found == 'h') help = true;
        if (found == 0)
            given.options[table[static_cast<std::size_t>(index)].name].push_back(
                optarg == nullptr ? "" : optarg);
    }
    given.operands.assign(argv + optind, argv + argc);
    given.json = given.json || given.has(json_option.name);
    int const count = argc - optind;
    if (complaint.empty() && !help && count < of.least_operands) complaint = "too few operands";
    if (complaint.empty() && !help && count > of.most_operands) complaint = "too many operands";
    if (complaint.empty() && of.kind == nature::narrates && given.json)
        complaint = "has no JSON to print";
    if (!complaint.empty()) throw usage_error(complaint);
    return help;
}

/// Runs it once, and reports what goes wrong. False when the operands that follow are to be left.
bool run_once(command const& chosen, arguments const& given, int& status) {
    std::unique_ptr<elapsed_time> time;
    try {
        if (chosen.kind == nature::takes_time && !given.json)
            time = elapsed_time::shown(given.command);
        status = std::max(status, chosen.run(given));
        bool const silent = chosen.kind == nature::acts || chosen.kind == nature::takes_time;
        if (silent && given.json) print_json(given, "done", true);
        return true;
    } catch (std::exception const& error) {
        time.reset();
        status = std::max(status, report_failure(given, error));
        return chosen.kind == nature::answers && status != wrong_usage;
    }
}

int run(command const& chosen, arguments const& given) {
    int status = EXIT_SUCCESS;
    if (chosen.most_operands != any_number) {
        run_once(chosen, given, status);
        return status;
    }
    for (std::string const& operand : given.operands) {
        arguments one = given;
        one.operands = {operand};
        if (!run_once(chosen, one, status)) break;
    }
    return status;
}

}  // namespace

int run_command_line(int argc, char** argv, std::vector<command> const& commands) {
    arguments given;
    int at = 1;
    for (; at < argc && std::string_view(argv[at]) == "--json"; ++at) given.json = true;
    if (at >= argc && !given.json) {
        print_help(commands, std::cerr);
        return wrong_usage;
    }
    if (at >= argc) return finished(report_failure(given, usage_error("no command")));
    given.command = argv[at];
    if (given.command == "--help" || given.command == "-h") {
        print_help(commands, std::cout);
        return finished(EXIT_SUCCESS);
    }
    std::string name = given.command;
    std::replace(name.begin(), name.end(), '_', '-');
    auto const chosen = std::find_if(commands.begin(), commands.end(),
                                     [&](command const& each) { return each.name == name; });
    if (chosen == commands.end()) {
        given.command.clear();
        return finished(
            report_failure(given, usage_error(std::string("no such command: ") + argv[at])));
    }
    given.command = name;
    try {
        if (!parse(*chosen, argc - at, argv + at, given)) return finished(run(*chosen, given));
        print_help(*chosen);
        return finished(EXIT_SUCCESS);
    } catch (usage_error const& error) {
        return finished(report_failure(given, error));
    }
}

}  // namespace kofs
