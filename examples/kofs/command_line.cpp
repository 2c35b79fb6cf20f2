#include "command_line.hpp"

#include <getopt.h>

#include <algorithm>
#include <cstddef>
#include <iomanip>
#include <iostream>
#include <string_view>

#include "report.hpp"

namespace kofs {

namespace {

constexpr int wrong_usage = 2;

void print_row(std::string const& left, char const* right) {
    std::cout << "  " << std::left << std::setw(30) << left << right << '\n';
}

void print_help(std::vector<command> const& commands) {
    std::cout << "Usage: kofs COMMAND [OPTION...] [PATH...]\n"
                 "Asks about files, and makes, moves, copies and removes them, through "
                 "ko::filesystem.\n\nCommands:\n";
    for (command const& each : commands)
        print_row(std::string(each.name) + ' ' + each.operands, each.help);
    std::cout << "\n'kofs COMMAND --help' tells more. A path may begin with ~ or ~name.\n"
                 "Exit status: 0 success, 1 failure, 2 wrong usage.\n";
}

void print_help(command const& of) {
    std::cout << "Usage: kofs " << of.name << (of.options.empty() ? "" : " [OPTION...]")
              << (*of.operands == '\0' ? "" : " ") << of.operands << '\n'
              << of.help << '\n';
    if (!of.options.empty()) std::cout << "\nOptions:\n";
    for (option_description const& each : of.options) {
        std::string const value = each.value == nullptr ? "" : std::string("=") + each.value;
        print_row("--" + (each.name + value), each.help);
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
    std::string name = argc < 2 ? "--help" : argv[1];
    std::replace(name.begin(), name.end(), '_', '-');
    if (name == "--help" || name == "-h") {
        print_help(commands);
        return argc < 2 ? wrong_usage : 0;
    }
    auto const chosen = std::find_if(commands.begin(), commands.end(),
                                     [&](command const& each) { return each.name == name; });
    if (chosen == commands.end()) {
        std::cerr << "kofs: no such command: " << name << "; see kofs --help\n";
        return wrong_usage;
    }
    try {
        bool help = false;
        arguments const given = parse(*chosen, argc - 1, argv + 1, help);
        if (help) {
            print_help(*chosen);
            return 0;
        }
        int const result = chosen->run(given);
        return std::cout.flush() ? result : 1;
    } catch (ko::filesystem::FsysExceptionBase const& error) {
        std::cout.flush();
        std::cerr << "kofs " << name << ":\n";
        print_error(std::cerr, error);
        return 1;
    } catch (usage_error const& error) {
        std::cerr << "kofs " << name << ": " << error.what() << "; see kofs " << name
                  << " --help\n";
        return wrong_usage;
    }
}

}  // namespace kofs
