// A tool for the shell on the public interface of ko::filesystem.

#include <climits>
#include <cstdlib>
#include <exception>
#include <iostream>

#include "command_line.hpp"
#include "report.hpp"
#include "tour.hpp"

namespace {

int status(kofs::arguments const& given) {
    bool all_found = true;
    for (std::string const& path : given.operands)
        all_found = kofs::describe(path, std::cout, std::cerr) && all_found;
    return all_found ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) try {
    return kofs::run_command_line(
        argc, argv,
        {
            {"status",
             "PATH...",
             1,
             INT_MAX,
             "Tell the native form and the parts of each path, and what is there",
             {},
             status},
            {"tour",
             "",
             0,
             0,
             "Show what the library answers about paths of this machine",
             {},
             kofs::tour},
        });
} catch (std::exception const& error) {
    std::cerr << "kofs: " << error.what() << '\n';
    return EXIT_FAILURE;
}
