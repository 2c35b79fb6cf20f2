#include "command_line.hpp"

#include <getopt.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <string_view>

#include "report.hpp"

namespace kofs {

namespace {

constexpr int wrong_usage = 2;

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
    out << "Usage: kofs COMMAND [OPTION...] [PATH...]\n"
           "Asks about files, and makes, moves, copies and removes them, through "
           "ko::filesystem.\n\nCommands:\n";
    for (command const& each : commands)
        print_row(out, std::string(each.name) + ' ' + each.operands, each.help);
    out << "\n'kofs COMMAND --help' tells more. A path may begin with ~ or ~name.\n"
           "Exit status: 0 success, 1 failure, 2 wrong usage; 128 and the signal's number when a\n"
           "signal has ended the tour.\n";
}

void print_help(command const& of) {
    std::cout << "Usage: kofs " << of.name << (of.options.empty() ? "" : " [OPTION...]")
              << (*of.operands == '\0' ? "" : " ") << of.operands << '\n'
              << of.help << '\n';
    if (!of.options.empty()) std::cout << "\nOptions:\n";
    for (option_description const& each : of.options) {
        std::string const value = each.value == nullptr ? "" : std::string("=") + each.value;
        print_row(std::cout, "--" + (each.name + value), each.help);
    }
}

arguments parse(command const& of, int argc, char** argv, bool& help) {
    std::vector<::option> table;
    for (option_description const& each : of.options)
        table.push_back(
            {each.name, each.value == nullptr ? no_argument : required_argument, nullptr, 0});
    table.push_back({"help", no_argument, nullptr, 'h'});
    table.push_back({nullptr, 0, nullptr, 0});

    arguments result;
    opterr = 0;
    for (int index = -1, found = 0;
         (found = getopt_long(argc, argv, ":h", table.data(), &index)) != -1;) {
        char const* const text = argv[std::max(optind - 1, 1)];
        if (found == ':') throw usage_error(std::string(text) + " needs a value");
        if (found == '?') throw usage_error(std::string("no such option: ") + text);
        if (found == 'h') help = true;
        if (found == 0)
            result.options[table[static_cast<std::size_t>(index)].name].push_back(
                optarg == nullptr ? "" : optarg);
    }
    result.operands.assign(argv + optind, argv + argc);
    int const count = argc - optind;
    if (!help && count < of.least_operands) throw usage_error("too few operands");
    if (!help && count > of.most_operands) throw usage_error("too many operands");
    return result;
}

}  // namespace

int run_command_line(int argc, char** argv, std::vector<command> const& commands) {
    std::string name = argc < 2 ? "" : argv[1];
    if (name.empty()) {
        print_help(commands, std::cerr);
        return wrong_usage;
    }
    if (name == "--help" || name == "-h") {
        print_help(commands, std::cout);
        return finished(EXIT_SUCCESS);
    }
    std::replace(name.begin(), name.end(), '_', '-');
    auto const chosen = std::find_if(commands.begin(), commands.end(),
                                     [&](command const& each) { return each.name == name; });
    if (chosen == commands.end()) {
        std::cerr << "kofs: no such command: " << argv[1] << "; see kofs --help\n";
        return wrong_usage;
    }
    try {
        bool help = false;
        arguments const given = parse(*chosen, argc - 1, argv + 1, help);
        if (!help) return finished(chosen->run(given));
        print_help(*chosen);
        return finished(EXIT_SUCCESS);
    } catch (ko::filesystem::FsysExceptionBase const& error) {
        std::cout.flush();
        std::cerr << "kofs " << name << ":\n";
        print_error(std::cerr, error);
        return EXIT_FAILURE;
    } catch (usage_error const& error) {
        std::cerr << "kofs " << name << ": " << error.what() << "; see kofs " << name
                  << " --help\n";
        return wrong_usage;
    }
}

}  // namespace kofs
