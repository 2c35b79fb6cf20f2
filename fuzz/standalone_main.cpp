// Replays the files that are named, for compilers without libFuzzer.

#include <fstream>
#include <iostream>
#include <iterator>

#include "fuzz.hpp"

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        std::ifstream file(argv[i], std::ios::binary);
        if (!file) {
            std::cerr << "can't read " << argv[i] << '\n';
            return 1;
        }
        std::string const data((std::istreambuf_iterator<char>(file)), {});
        LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(data.data()), data.size());
    }
    std::cout << argc - 1 << " inputs replayed\n";
    return argc > 1 ? 0 : 1;
}
