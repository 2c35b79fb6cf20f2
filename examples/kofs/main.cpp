// A tool for the shell on the public interface of ko::filesystem.

#include <cstdlib>
#include <exception>
#include <iostream>

#include "command_line.hpp"
#include "commands.hpp"

int main(int argc, char** argv) try {
    return kofs::run_command_line(argc, argv, kofs::commands());
} catch (std::exception const& error) {
    std::cerr << "kofs: " << error.what() << '\n';
    return EXIT_FAILURE;
}
