#include "result.hpp"

#include <cstdlib>
#include <iostream>
#include <vector>

#include <ko/filesystem.hpp>

#include "report.hpp"

namespace kofs {

namespace fs = ko::filesystem;

namespace {

constexpr int wrong_usage = 2;

void print_failure(arguments const& given, std::exception const& error,
                   fs::FsysExceptionBase const* failure, bool misuse) {
    std::cout.flush();
    std::cerr << "kofs" << (given.command.empty() ? "" : " ") << given.command << ':';
    if (failure != nullptr) {
        std::cerr << '\n';
        print_error(std::cerr, *failure);
        return;
    }
    std::cerr << ' ' << error.what();
    if (misuse)
        std::cerr << "; see kofs" << (given.command.empty() ? "" : " ") << given.command
                  << " --help";
    std::cerr << '\n';
}

}  // namespace

void print_json(arguments const& given, char const* name, json const& value) {
    std::vector<std::u16string> operands;
    for (std::string const& each : given.operands)
        operands.push_back(fs::detail::from_filesystem(each));
    // At once: who reads along, or sees the process killed, is to know what was done.
    std::cout << json{{"command", given.command.empty() ? json(nullptr) : json(given.command)},
                      {"operands", operands},
                      {name, value}}
                     .text()
              << '\n'
              << std::flush;
}

int print(arguments const& given, std::u16string const& result) {
    if (given.json)
        print_json(given, "result", result);
    else
        std::cout << shown(result) << '\n';
    return EXIT_SUCCESS;
}

int answer(arguments const& given, bool yes) {
    if (given.json)
        print_json(given, "result", yes);
    else
        std::cout << (yes ? "yes" : "no") << '\n';
    return yes ? EXIT_SUCCESS : EXIT_FAILURE;
}

int report_failure(arguments const& given, std::exception const& error) {
    bool const misuse = dynamic_cast<usage_error const*>(&error) != nullptr;
    auto const* const failure = dynamic_cast<fs::FsysExceptionBase const*>(&error);
    if (!given.json)
        print_failure(given, error, failure, misuse);
    else if (failure != nullptr)
        print_json(given, "error", error_json(*failure));
    else
        print_json(given, "error",
                   {{"class", misuse ? "usage" : "exception"}, {"what", error.what()}});
    return misuse ? wrong_usage : EXIT_FAILURE;
}

}  // namespace kofs
