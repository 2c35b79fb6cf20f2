#include "tour.hpp"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <utility>

#include "report.hpp"

namespace kofs {

namespace {

/// A directory that is gone with everything in it when the tour ends.
class scratch_directory {
public:
    scratch_directory() : path_((std::filesystem::temp_directory_path() / "kofs-XXXXXX").string()) {
        if (::mkdtemp(path_.data()) == nullptr)
            throw std::runtime_error("can't make a directory like " + path_);
    }
    scratch_directory(scratch_directory const&) = delete;
    scratch_directory& operator=(scratch_directory const&) = delete;
    ~scratch_directory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    std::string operator/(char const* name) const { return path_ + '/' + name; }

private:
    std::string path_;
};

}  // namespace

int tour(arguments const&) {
    scratch_directory const scratch;
    std::filesystem::create_directory(scratch / "Übersicht");
    std::ofstream(scratch / "Übersicht/報告 2024.txt") << "twelve bytes";
    std::filesystem::create_symlink("Übersicht/報告 2024.txt", scratch / "link");
    std::filesystem::create_symlink("nowhere", scratch / "dangling");

    std::pair<char const*, std::string> const stops[] = {
        {"the home directory", "~"},
        {"a system file, its path written carelessly", "//etc///passwd"},
        {"a directory", "/usr/share/"},
        {"names that are not ASCII", scratch / "Übersicht/報告 2024.txt"},
        {"a symbolic link", scratch / "link"},
        {"a dangling link", scratch / "dangling"},
        {"a missing path", scratch / "missing.tar.gz"},
        {"a path below a regular file", "/etc/passwd/x"},
    };
    for (auto const& [what, path] : stops) {
        std::cout << "# " << what << ": ";
        describe(path, std::cout, std::cout);
        std::cout << '\n';
    }
    return std::cout ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace kofs
