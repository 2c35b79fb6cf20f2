// Prints the bytes in all regular files below a directory, by one of three ways:
//   sizes ko|"ko, by path"|std DIRECTORY

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>

#include <ko/filesystem.hpp>

namespace {

namespace fs = ko::filesystem;
namespace std_fs = std::filesystem;

std::uint64_t by_ko(char const* top, fs::directory_option options) {
    std::uint64_t sum = 0;
    for (auto const& entry :
         fs::recursive_directory_iterator(fs::upath::from_utf8(top, false), options))
        if (entry.type() == fs::file_status::regular_file) sum += entry.file_size();
    return sum;
}

std::uint64_t by_std(char const* top) {
    std::uint64_t sum = 0;
    for (auto const& entry : std_fs::recursive_directory_iterator(top))
        if (entry.symlink_status().type() == std_fs::file_type::regular) sum += entry.file_size();
    return sum;
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 3) return 2;
    std::string const way = argv[1];
    std::uint64_t const sum = way == "std"
                                  ? by_std(argv[2])
                                  : by_ko(argv[2], way == "ko" ? fs::directory_option::read_status
                                                               : fs::directory_option::none);
    std::printf("%llu\n", static_cast<unsigned long long>(sum));
} catch (std::exception const& error) {
    std::fprintf(stderr, "%s\n", fs::describe(error).c_str());
    return EXIT_FAILURE;
}
